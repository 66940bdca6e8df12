#pragma once

#include "rule.h"

namespace scribo::cpu {

/// How the results of each kind of operation follow from its inputs. Each is false, with the reason
/// in the rule, when the inputs do not fit.

// spatialrules.cpp
bool inferConvolution(Rule& rule);
bool inferPooling(Rule& rule);
bool inferReduction(Rule& rule);
bool inferResize(Rule& rule);

// matrixrules.cpp
bool inferRecurrent(Rule& rule);
bool inferFullyConnected(Rule& rule);
bool inferMatrixProduct(Rule& rule);

// elementrules.cpp
bool inferActivation(Rule& rule);
bool inferUnary(Rule& rule);
bool inferBinary(Rule& rule);
bool inferSoftmax(Rule& rule);
bool inferChannelAffine(Rule& rule);
bool inferLayerNormalisation(Rule& rule);

// reshaperules.cpp
bool inferReshape(Rule& rule);
bool inferSqueeze(Rule& rule);
bool inferUnsqueeze(Rule& rule);

// conversionrules.cpp
bool inferShapeOf(Rule& rule);
bool inferCast(Rule& rule);
bool inferFill(Rule& rule);

// movementrules.cpp: everything that describeMovement() knows
bool inferMovement(Rule& rule);

} // namespace scribo::cpu
