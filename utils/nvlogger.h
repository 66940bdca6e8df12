#pragma once

#include <NvInfer.h>

/// Forwards the runtime's diagnostics to glog, so that they stand in one log with the detectors' lines.
///
/// An internal error of the runtime is logged at FATAL, which ends the process: no reading of an engine with an
/// internal error can be trusted.
class Logger : public nvinfer1::ILogger
{
public:
    /// The one logger of the process, made on first use and never destroyed: runtimes keep a reference
    /// to it and live as long as the process.
    static Logger& instance();

    /// Writes `message` as it stands. Called by the runtime on whichever thread runs an operation.
    void log(Severity severity, const char* message) noexcept override;
};
