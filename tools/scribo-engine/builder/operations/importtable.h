#pragma once

#include "importer.h"

namespace scribo::builder {

/// The rule of every ONNX operation that is supported.
const ImportTable& importTable();

} // namespace scribo::builder
