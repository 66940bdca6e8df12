#pragma once

#include "engine_generated.h"

#include <oneapi/dnnl/dnnl.hpp>

#include <vector>

namespace scribo::cpu {

/// One of oneDNN's elementwise functions.
struct ElementFunction
{
    dnnl::algorithm algorithm;
    float alpha = 0;
    float beta = 0;
};

/// An activation as oneDNN's functions, one after the other; none for a null or empty activation.
std::vector<ElementFunction> elementFunctions(const format::Activation* activation);

/// Makes a primitive apply `activation` to its result.
void appendActivation(dnnl::primitive_attr* attributes, const format::Activation* activation);

} // namespace scribo::cpu
