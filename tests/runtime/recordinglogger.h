#pragma once

#include "NvInferRuntimeCommon.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace scribo::test {

/// Keeps what a runtime reports.
class RecordingLogger : public nvinfer1::ILogger
{
public:
    void log(Severity severity, const char* message) noexcept override
    {
        const std::lock_guard lock(mutex);
        entries.emplace_back(severity, message);
    }

    /// Everything reported since the last call.
    std::vector<std::pair<Severity, std::string>> take()
    {
        const std::lock_guard lock(mutex);
        return std::exchange(entries, {});
    }

    /// The text of the one error that was reported since the last call; what it was instead, when it
    /// was not exactly that.
    std::string takeError()
    {
        const auto reported = take();
        if (reported.size() != 1 || reported.front().first != Severity::kERROR) {
            return "(" + std::to_string(reported.size()) + " reports, not one error)";
        }
        return reported.front().second;
    }

private:
    std::mutex mutex;
    std::vector<std::pair<Severity, std::string>> entries;
};

} // namespace scribo::test
