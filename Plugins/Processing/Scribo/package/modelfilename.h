#pragma once

#include <QString>

#include <optional>

/// What an engine file's path tells about its model package.
struct ModelFileName
{
    QString engineType; ///< the suffix: what follows the last dot of the name
    QString modelName; ///< pieces 2 to 4 of the name, joined by "_"
    QString configPath; ///< absolute path of the configuration file beside the engine
};

/// Splits the name of the engine file at `path` at every "_", dropping empty pieces:
/// crnn_plate_line_v2_fp16.trt is of type trt, belongs to the model plate_line_v2 and is configured by
/// crnn_plate_line_v2.json. Nothing unless there are exactly five pieces. Whether the file exists is
/// not looked at.
std::optional<ModelFileName> splitModelFileName(const QString& path);
