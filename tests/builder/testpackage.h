#pragma once

#include "modelmaker.h"

#include <QJsonObject>
#include <QTemporaryDir>

/// A model package in a folder of its own: ocr_small_p1_1_v1.trt, for 5 classes and widths 32 to 320,
/// and its configuration, which fits.
class TestPackage
{
public:
    TestPackage();

    QString path(const QString& name) const { return folder.filePath(name); }
    QString engine() const { return path(QStringLiteral("ocr_small_p1_1_v1.trt")); }

    /// Builds `model` into the engine file `name`.
    void writeEngine(const ModelMaker& model, const QString& name, int minimumWidth = 32, int maximumWidth = 320) const;
    /// Writes the configuration as it stands.
    void writeConfiguration() const;
    void writeFile(const QString& name, const QByteArray& content) const;

    /// Changes a value of "input_dims" or "model_infer_info", and writes the configuration.
    void setDimension(const QString& key, int value);
    void setInferInfo(const QString& key, const QJsonValue& value);
    void set(const QString& key, const QJsonValue& value);

private:
    QTemporaryDir folder;
    QJsonObject configuration;
};
