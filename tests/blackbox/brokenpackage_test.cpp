// Faulty model packages. Each of them gives NG items that say why, and the next good package reads.

#include "loadedplugin.h"
#include "scriptedtool.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <opencv2/imgproc.hpp>

#include <gtest/gtest.h>

#include <functional>

namespace {

class BrokenPackage : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_NE(plugin.root(), nullptr) << plugin.errorString().toStdString();
        engine = read("ocr_printed_p1_1_v1.trt");
        configuration = QJsonDocument::fromJson(read("ocr_printed_p1_1.json")).object();
        ASSERT_FALSE(engine.isEmpty() || configuration.isEmpty());
        ASSERT_TRUE(QDir(station.path()).mkdir("model") && QDir::setCurrent(station.path()));
        write("ocr_printed_p1_1_v1.trt", engine);
        write("ocr_printed_p1_1.json", QJsonDocument(configuration).toJson());
        tool.picture = print("A4827");
        tool.taughtRegions = {QRectF(0, 0, 200, 40)};
        reading = readWithGoodPackage();
        ASSERT_FALSE(reading.isEmpty());
    }

    static cv::Mat print(const char* text)
    {
        cv::Mat picture(40, 200, CV_8UC1, cv::Scalar(230));
        cv::putText(picture, text, {20, 30}, cv::FONT_HERSHEY_DUPLEX, 1.0, cv::Scalar(20), 2, cv::LINE_AA);
        return picture;
    }

    QString readWithGoodPackage()
    {
        const auto good = plugin.makeInstance(&tool);
        good->process(&tool, 0);
        EXPECT_TRUE(good->isResultOk(0));
        return good->resultRecord(0)["resString"].toString();
    }

    static QByteArray read(const QString& name)
    {
        QFile file("model/" + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static void write(const QString& name, const QByteArray& content)
    {
        QFile file("model/" + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
    }

    /// Writes the package NAME with a changed value of "model_infer_info".
    void writeChanged(const QString& name, const QString& key, const QJsonValue& value)
    {
        QJsonObject changed = configuration;
        QJsonObject info = changed["model_infer_info"].toObject();
        info[key] = value;
        changed["model_infer_info"] = info;
        write("ocr_" + name + "_p1_1.json", QJsonDocument(changed).toJson());
        write("ocr_" + name + "_p1_1_v1.trt", engine);
    }

    /// Expects that items of the package NAME are NG with one line that says something of `reason`, and that a good
    /// package reads afterwards.
    void expectFaults(const QString& name, const QString& reason)
    {
        const auto broken = plugin.makeInstance(&tool, "ocr_" + name + "_p1_1_v1.trt");
        for (int item = 0; item < 2; ++item) {
            broken->process(&tool, 0);
            EXPECT_FALSE(broken->isResultOk(0));
            const QVariantMap record = broken->resultRecord(0);
            const QVariantList messages = record["defect_types"].toList();
            ASSERT_EQ(messages.size(), 1);
            EXPECT_TRUE(messages[0].toString().contains(reason)) << messages[0].toString().toStdString();
            EXPECT_EQ(record["defect_scores"].toList(), (QVariantList{-1.0}));
        }
        EXPECT_EQ(readWithGoodPackage(), reading);
    }

    LoadedPlugin plugin;
    ScriptedTool tool;
    QTemporaryDir station;
    QString reading; ///< with the good package
    QByteArray engine;
    QJsonObject configuration;
};

} // namespace

TEST_F(BrokenPackage, ConfigurationMissing)
{
    write("ocr_nojson_p1_1_v1.trt", engine);
    expectFaults("nojson", "ocr_nojson_p1_1.json");
}

TEST_F(BrokenPackage, ConfigurationTruncated)
{
    write("ocr_truncated_p1_1_v1.trt", engine);
    write("ocr_truncated_p1_1.json", QJsonDocument(configuration).toJson().left(200));
    expectFaults("truncated", "Parse config file");
}

TEST_F(BrokenPackage, WrongHeight)
{
    QJsonObject dimensions = configuration["model_infer_info"].toObject()["input_dims"].toObject();
    dimensions["height"] = 48;
    writeChanged("height", "input_dims", dimensions);
    expectFaults("height", "ocr_height_p1_1_v1.trt");
}

TEST_F(BrokenPackage, WrongLayerName)
{
    writeChanged("layer", "output_layers", QJsonArray{"scores"});
    expectFaults("layer", "ocr_layer_p1_1_v1.trt");
}

TEST_F(BrokenPackage, AlphabetTooShort)
{
    QJsonObject changed = configuration;
    changed["alphabet"] = "0123456789";
    write("ocr_alphabet_p1_1.json", QJsonDocument(changed).toJson());
    write("ocr_alphabet_p1_1_v1.trt", engine);
    expectFaults("alphabet", "unknown error!");

    // A print without letters loses nothing.
    tool.picture = print("4827");
    const auto broken = plugin.makeInstance(&tool, "ocr_alphabet_p1_1_v1.trt");
    broken->process(&tool, 0);
    EXPECT_TRUE(broken->isResultOk(0));
    EXPECT_EQ(broken->resultRecord(0)["resString"], "4827");
}

TEST_F(BrokenPackage, EngineDamaged)
{
    QByteArray damaged = engine;
    damaged[damaged.size() / 2] = static_cast<char>(~damaged[damaged.size() / 2]);
    write("ocr_damaged_p1_1.json", QJsonDocument(configuration).toJson());
    write("ocr_damaged_p1_1_v1.trt", damaged);
    expectFaults("damaged", "ocr_damaged_p1_1_v1.trt");
}
