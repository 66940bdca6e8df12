#pragma once

#include "cuda_runtime_api.h"

namespace scribo::cpu {

/// Whether `stream` is the default stream (null) or one that cudaStreamCreate() made.
bool isStream(cudaStream_t stream);

} // namespace scribo::cpu
