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
    int characters = 0;
    /// What was found out and done about it.
    QStringList notes;
};

/// Makes a package from a model and its keys. False, with a sentence for everything that does not
/// fit, after the path that it is about, in `problems`.
bool makePackage(const PackageSource& source, MadePackage* made, QStringList* problems);

} // namespace scribo::tool
