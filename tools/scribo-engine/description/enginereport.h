#pragma once

#include "result.h"

#include "engine_generated.h"

#include <QString>

#include <cstdint>
#include <string>
#include <vector>

namespace scribo::tool {

using Shape = std::vector<std::int64_t>;

struct BindingReport
{
    QString name;
    bool isInput = false;
    Shape declared; ///< -1 where the width decides
    Shape narrowest; ///< at the smallest width
    Shape widest; ///< at the largest width
};

struct OperationReport
{
    QString kind;
    QString name; ///< of the ONNX node that it came from
    QString details; ///< attributes, as "3x3, pads 1 1 1 1, Relu"
    std::vector<Shape> weights; ///< of its constants of floats
    Shape narrowest; ///< of its first output that is read
    Shape widest;
    std::int64_t multiplyAddsNarrowest = 0;
    std::int64_t multiplyAddsWidest = 0;
};

/// What an engine holds, for people and programs.
struct EngineReport
{
    QString builder;
    QString source;
    int minimumWidth = 0;
    int maximumWidth = 0;
    std::vector<BindingReport> bindings;
    std::vector<OperationReport> operations;
    std::int64_t weightCount = 0; ///< constant floats, each counted once
    std::int64_t multiplyAddsNarrowest = 0;
    std::int64_t multiplyAddsWidest = 0;
};

/// Looks into `network`. An error when its shapes cannot be worked out.
Result<EngineReport> describeEngine(const format::Network& network);

} // namespace scribo::tool
