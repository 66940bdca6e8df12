#pragma once

#include "detectorconfig.h"
#include "result.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <string>
#include <vector>

/// One class of a model.
struct ClassInfo
{
    std::string name; ///< UTF-8
    // Part of the file's format, for models that judge by class. Nothing here reads them.
    bool as_ok = false;
    std::int32_t ok_num = 0;
};

/// What a model package's configuration file says.
struct ModelConfig
{
    DetectorConfig detector;
    std::vector<ClassInfo> classes;
    QString ignoreChar;

    /// Whether there is a class and an input size: the least that a detector can be made from.
    bool hasClassAndInputSize() const;
};

/// Reads the configuration file at `path` into `config`, which starts out empty. On failure
/// `config` holds what was read until that point. Logs nothing.
///
/// A missing key or a value of another JSON type reads as the key's default, and so does a number with
/// a fraction, or beyond 32 bits, where an integer is meant.
scribo::Result<void> readModelConfig(const QString& path, ModelConfig* config);

/// As readModelConfig(), from the file's bytes (UTF-8, with or without a byte-order mark); `path` only
/// names the file in the message.
scribo::Result<void> parseModelConfig(const QByteArray& bytes, const QString& path, ModelConfig* config);
