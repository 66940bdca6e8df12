#pragma once

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace scribo::test {

/// A job's folder to write into.
class JobFolder
{
public:
    JobFolder()
    {
        json = QJsonDocument::fromJson(R"({
            "name": "label", "number": 7, "model": "ocr_printed_p1_1_v1.trt",
            "regions": [{"name": "part", "rect": [132, 64, 270, 52], "expected": "PN:7741-B"},
                        {"name": "date", "rect": [132, 147, 276, 54]}]})")
                   .object();
    }

    QString path() const { return folder.path(); }
    QString file(const QString& name) const { return folder.filePath(name); }

    void write(const QString& name, const QByteArray& bytes) const
    {
        QFile target(file(name));
        ASSERT_TRUE(target.open(QIODevice::WriteOnly));
        target.write(bytes);
    }

    /// Writes job.json as `json` has it.
    void save() const { write(QStringLiteral("job.json"), QJsonDocument(json).toJson()); }

    /// A key of a region, from 0.
    void setRegion(int region, const QString& key, const QJsonValue& value)
    {
        QJsonArray regions = json[QStringLiteral("regions")].toArray();
        QJsonObject changed = regions[region].toObject();
        changed[key] = value;
        regions[region] = changed;
        json[QStringLiteral("regions")] = regions;
    }

    QJsonObject json;

private:
    QTemporaryDir folder;
};

} // namespace scribo::test
