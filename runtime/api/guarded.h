#pragma once

#include "NvInferRuntimeCommon.h"
#include "result.h"

#include <exception>
#include <new>
#include <string>

namespace scribo::cpu {

/// Runs `action()`, which gives a Result<void>. A failure, also one that is thrown, is reported to `logger` as one
/// error that starts with `what`, and is false. Never an internal error: those end the process of an application that
/// maps them to fatal ones.
template <class Action>
bool guarded(nvinfer1::ILogger& logger, const char* what, Action action) noexcept
{
    const auto report = [&logger](const char* text) { logger.log(nvinfer1::ILogger::Severity::kERROR, text); };
    try {
        std::string error;
        try {
            const Result<void> done = action();
            if (done) {
                return true;
            }
            error = done.error().message;
        } catch (const std::bad_alloc&) {
            error = "there is not enough memory";
        } catch (const std::exception& fault) {
            error = fault.what();
        }
        error = std::string(what) + ": " + error;
        report(error.c_str());
    } catch (...) {
        // Not even the message could be put together.
        report(what);
    }
    return false;
}

} // namespace scribo::cpu
