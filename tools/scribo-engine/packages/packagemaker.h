#pragma once

#include "enginemaker.h"
#include "keys.h"

namespace scribo::tool {

/// What a package is made from.
struct PackageSource
{
    QString model; ///< the path of the ONNX model
    QString keys; ///< the path of its keys
    builder::BuildOptions options;
    /// Whether the layout of the options was asked for; otherwise it is found out.
    bool layoutGiven = false;
};

/// A package in memory: the contents of its two files.
struct MadePackage
{
    MadeEngine engine;
    QByteArray configuration;
    /// What was found out and done about it.
    QStringList notes;
};

/// Makes a package from a model and its keys. Each fault begins with the path of the file that it is about.
Checked<MadePackage> makePackage(const PackageSource& source);

} // namespace scribo::tool
