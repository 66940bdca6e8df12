#include "nvlogger.h"

#include <glog/logging.h>

#include <algorithm>
#include <cstdint>

Logger& Logger::instance()
{
    static auto* const logger = new Logger;
    return *logger;
}

void Logger::log(Severity severity, const char* message) noexcept
{
    if (severity >= Severity::kVERBOSE) {
        VLOG(0) << message;
        return;
    }
    // TensorRT counts from the worst down (internal error 0 to info 3), glog up to the worst (INFO 0 to FATAL 3).
    const auto value = std::max<std::int32_t>(0, static_cast<std::int32_t>(severity));
    google::LogMessage(__FILE__, __LINE__, google::GLOG_FATAL - value).stream() << message;
}
