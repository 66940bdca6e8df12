#pragma once

#include "inspectionresult.h"
#include "result.h"

namespace scribo::host {

/// What became of a picture that the user named.
struct PictureResult
{
    QString picture; ///< the name by which the user gave it
    Result<InspectionResult> inspection; ///< an error: why it was not inspected
};

} // namespace scribo::host
