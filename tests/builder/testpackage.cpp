#include "testpackage.h"

#include "build.h"
#include "format/enginefile.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

TestPackage::TestPackage()
{
    const QJsonObject dimensions = {{"width", 320}, {"height", 32}, {"channels", 3}, {"batch", 1}};
    const QJsonObject info
        = {{"input_dims", dimensions}, {"input_layers", QJsonArray{"input"}}, {"output_layers", QJsonArray{"output"}}};
    configuration
        = {{"classes", QJsonArray{QJsonObject{{"name", "0O"}}}}, {"alphabet", "ABCD"}, {"model_infer_info", info}};
    writeEngine(smallRecogniser(5), QStringLiteral("ocr_small_p1_1_v1.trt"));
    writeConfiguration();
}

void TestPackage::writeEngine(const ModelMaker& model, const QString& name, int minimumWidth, int maximumWidth) const
{
    const std::string bytes = model.bytes();
    const auto network
        = scribo::builder::buildNetwork(bytes.data(), bytes.size(), {{minimumWidth, maximumWidth}, "small.onnx"});
    ASSERT_TRUE(network) << testing::PrintToString(network.error());
    const std::vector<std::uint8_t> engine = scribo::format::writeEngine(**network);
    writeFile(name, QByteArray(reinterpret_cast<const char*>(engine.data()), static_cast<int>(engine.size())));
}

void TestPackage::writeConfiguration() const
{
    writeFile(QStringLiteral("ocr_small_p1_1.json"), QJsonDocument(configuration).toJson());
}

void TestPackage::writeFile(const QString& name, const QByteArray& content) const
{
    QFile file(path(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(content), content.size());
}

void TestPackage::set(const QString& key, const QJsonValue& value)
{
    configuration[key] = value;
    writeConfiguration();
}

void TestPackage::setInferInfo(const QString& key, const QJsonValue& value)
{
    QJsonObject info = configuration["model_infer_info"].toObject();
    info[key] = value;
    set(QStringLiteral("model_infer_info"), info);
}

void TestPackage::setDimension(const QString& key, int value)
{
    QJsonObject dimensions = configuration["model_infer_info"].toObject()["input_dims"].toObject();
    dimensions[key] = value;
    setInferInfo(QStringLiteral("input_dims"), dimensions);
}
