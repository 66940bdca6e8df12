#include "fakeprocessor.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>

#include <algorithm>

FakeProcessor::FakeProcessor()
    : models(QDir("model").entryList({"*.trt"}, QDir::Files, QDir::Name))
{
    int* const low = &smallest;
    int* const high = &largest;
    const auto limited = [&](const char* name, int* value, int* from, int* to) {
        return new LimitLineEditParam(name, {}, true, true, value, from, to, LineEditParam::IntValue, low, high, &step);
    };
    parameters << new SeparateParam("heading", {}, true, true)
               << new ComboBoxParam_ByValue("model", {}, true, true, 1, &models, &models, &model)
               << new RadioBoxParam("enable", {}, true, true, 1, enable, 2, enableNames, enableNames)
               << new CheckBoxParam("save", {}, true, true, 1, save, 2, saveNames, saveNames)
               << limited("ok", &saved[0], &saveLow[0], &saveLimit[0])
               << limited("ng", &saved[1], &saveLow[1], &saveLimit[1])
               << new LineEditParam("path", {}, true, true, 2, &savePath, LineEditParam::StringValue, low, high, &step)
               << new SeparateParam("heading", {}, true, true)
               << new RadioBoxParam("compare", {}, true, true, 1, compare, 3, compareNames, compareNames)
               << new LineEditParam(
                      "reference", {}, true, true, 3, &reference, LineEditParam::StringValue, nullptr, nullptr, nullptr)
               << new SeparateParam("heading", {}, true, true)
               << new LineEditParam(
                      "text", {}, true, true, 2, &text, LineEditParam::StringValue, nullptr, nullptr, nullptr)
               << limited("count", &count, &countLow, &countHigh);
}

void FakeProcessor::loadParams(const QJsonObject& settings)
{
    const QJsonArray values = settings["paramsWrap"].toArray();
    for (int i = 0; i < std::min(values.size(), parameters.size()); ++i) {
        parameters[i]->readJson(values[i].toObject());
    }
}

void FakeProcessor::saveParams(QJsonObject& settings)
{
    QJsonArray values;
    for (ParamWrap* const parameter : parameters) {
        QJsonObject state;
        parameter->writeJson(state);
        values.append(state);
    }
    settings["paramsWrap"] = values;
}

QString FakeProcessor::nextReading(Tool& tool, int index)
{
    QFile file("readings");
    if (!file.open(QIODevice::ReadOnly)) {
        return "AB12";
    }
    const QStringList readings = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    const QString reading = readings[std::min(processed, readings.size() - 1)];
    ++processed;
    if (reading == "@pose") {
        PosePair pose;
        const bool hasPose = tool.upstreamPose("upstream", index, &pose);
        return hasPose ? QString("%1,%2").arg(pose.currentX).arg(pose.currentY) : "no pose";
    }
    if (reading != "@pixel") {
        return reading;
    }
    const cv::Mat picture = tool.image(index);
    if (picture.channels() == 1) {
        return QString::number(picture.at<uchar>(0, 0));
    }
    const auto& pixel = picture.at<cv::Vec3b>(0, 0);
    return QString("%1,%2,%3").arg(pixel[0]).arg(pixel[1]).arg(pixel[2]);
}

bool FakeProcessor::judge()
{
    if (compare[0]) {
        return true;
    }
    return text == reference && count >= countLow && count <= countHigh;
}

void FakeProcessor::process(Tool* tool, int index)
{
    if (index == 0) {
        items.clear();
    }
    text.clear();
    count = -1;
    if (enable[1]) {
        return; // nothing is inspected, and no item recorded
    }
    const QString reading = nextReading(*tool, index);
    Item item;
    item.box = tool->regions(index).first().toRect();
    if (reading.startsWith('!')) {
        item = {false, item.box, -1, reading.mid(1)};
    } else {
        text = reading;
        count = reading.size();
        item = {judge(), item.box, 0.5, reading};
    }
    items.append(item);
    archivePicture(tool, item.isOk);
}

void FakeProcessor::archivePicture(Tool* tool, bool isOk)
{
    const int verdict = isOk ? 0 : 1;
    const QString base = tool->removableDiskPath().isEmpty() ? tool->toolDirectory() + "AISavePic"
                                                             : tool->removableDiskPath() + "/AISavePic_20261121";
    const QDir folder(base + "/fake_" + tool->toolIdentity() + (isOk ? "/OK" : "/NG/ng"));
    if (!save[verdict] || !tool->savingAllowed() || !folder.mkpath(".")) {
        return;
    }
    saved[verdict] = folder.entryList(QDir::Files).size();
    const bool isFull = tool->removableDiskPath().isEmpty() && saved[verdict] >= saveLimit[verdict];
    if (isFull || text == "(lost)") {
        return;
    }
    QFile file(folder.filePath(QString("%1.bmp").arg(saved[verdict])));
    file.open(QIODevice::WriteOnly);
}

ProcessorInterface* FakeProcessor::clone(Tool*, bool)
{
    return new FakeProcessor;
}

bool FakeProcessor::isResultOk(int index)
{
    if (index == -1) {
        return std::all_of(items.begin(), items.end(), [](const Item& item) { return item.isOk; });
    }
    return index >= 0 && index < items.size() && items[index].isOk;
}

QVariantMap FakeProcessor::resultRecord(int index)
{
    QVariantList boxes;
    QVariantList scores;
    QVariantList types;
    const Item item = items.value(index);
    if (!item.isOk) {
        boxes.append(item.box);
        scores.append(item.score);
        types.append(item.text);
    }
    return {{"defect_rects", boxes}, {"defect_scores", scores}, {"defect_types", types}, {"charCount", count},
        {"resString", text}};
}

void FakeProcessor::drawResult(QPainter* painter, int index)
{
    painter->fillRect(items.value(index).box, items.value(index).isOk ? Qt::green : Qt::red);
}
