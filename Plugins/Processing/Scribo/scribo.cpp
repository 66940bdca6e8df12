#include "scribo.h"

#include "linejudge.h"
#include "modellist.h"
#include "ocranalyser.h"
#include "ocrdetector.h"
#include "posecorrection.h"
#include "regioncutter.h"
#include "resultoverlay.h"
#include "resultrecord.h"

#include <QDebug>
#include <QDynamicPropertyChangeEvent>
#include <QGuiApplication>

#include <algorithm>
#include <exception>

namespace {

const QString paramsKey = QStringLiteral("paramsWrap");
constexpr char scoreLimitsProperty[] = "scoreLimits";

/// The upstream tool whose pose the regions follow: syringe segmentation.
const QString poseTool = QStringLiteral("注射器分割");

std::vector<ScoreLimit> readScoreLimits(const QVariant& property)
{
    std::vector<ScoreLimit> limits;
    for (const QVariant& element : property.toList()) {
        const QVariantMap map = element.toMap();
        const QVariantList values = map[QStringLiteral("values")].toList();
        ScoreLimit limit;
        limit.name = map[QStringLiteral("name")].toString();
        limit.flag = map[QStringLiteral("flag")].toBool();
        for (int i = 0; i < std::min(values.size(), 4); ++i) {
            limit.values[i] = values[i].toDouble();
        }
        limits.push_back(limit);
    }
    return limits;
}

/// The line of a region whose text could not be read.
SOrgAI_ResInfo messageLine(const QString& message, const cv::Rect& region)
{
    SOrgAI_ResInfo line;
    line.score = -1.0;
    line.classIndex = -1;
    line.text = message.toStdString();
    line.rect = region;
    return line;
}

/// What the exception says that is being handled. The host's tools may throw anything.
const char* exceptionText()
{
    try {
        throw;
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "an exception of an unknown kind";
    }
}

QImage greyImage(const cv::Mat& mat)
{
    QImage image(mat.cols, mat.rows, QImage::Format_Indexed8);
    if (image.isNull()) {
        return image;
    }
    QVector<QRgb> greys(256);
    for (int level = 0; level < greys.size(); ++level) {
        greys[level] = qRgb(level, level, level);
    }
    image.setColorTable(greys);
    for (int row = 0; row < mat.rows; ++row) {
        std::copy_n(mat.ptr(row), mat.cols, image.scanLine(row));
    }
    return image;
}

/// The pixels of `mat` as an image that cannot be written through: what changes it has to copy them first.
QImage sharedImage(const cv::Mat& mat, QImage::Format format)
{
    const uchar* const pixels = mat.data;
    return QImage(pixels, mat.cols, mat.rows, static_cast<int>(mat.step), format);
}

} // namespace

Scribo::Scribo()
    : parameters(settings)
    , archive(settings, &Scribo::cvMat2QImage)
{
    settings.modelFiles = listModelFiles();
    settings.modelFileTexts = settings.modelFiles;
}

Scribo::~Scribo() = default;

// Settings

void Scribo::loadParams(const QJsonObject& settingsObject)
{
    if (!settingsObject.contains(paramsKey)) {
        return;
    }
    const QJsonArray values = settingsObject[paramsKey].toArray();
    parameters.fromJson(values);
    if (settings.modelFiles.contains(settings.selectedModel)) {
        createAnalyser();
    }
    // Again, so that nothing that loading the model did stands over what was saved.
    parameters.fromJson(values);
}

void Scribo::saveParams(QJsonObject& settingsObject)
{
    settingsObject[paramsKey] = parameters.toJson();
}

void Scribo::createAnalyser()
{
    errorText.clear();
    analyser.reset();
    try {
        analyser = std::make_unique<OCRAnalyser>(QStringLiteral("./model/") + settings.selectedModel);
        if (!analyser->isInitialized()) {
            errorText += analyser->errorMessage() + "\n";
            return;
        }
        std::vector<SOrgAI_ResInfo> discarded;
        analyser->execute(cv::Mat::zeros(100, 100, CV_8UC1), discarded);
    } catch (...) {
        qCritical() << "Loading the model failed:" << exceptionText();
        errorText += QString::fromUtf8(exceptionText()) + "\n";
    }
}

bool Scribo::hasLoadedAnalyser() const
{
    return analyser && analyser->isInitialized();
}

QString Scribo::modelName() const
{
    return analyser ? analyser->modelName() : QString();
}

bool Scribo::event(QEvent* event)
{
    if (event->type() == QEvent::DynamicPropertyChange
        && static_cast<QDynamicPropertyChangeEvent*>(event)->propertyName() == scoreLimitsProperty) {
        scoreLimits = readScoreLimits(property(scoreLimitsProperty));
    }
    return QObject::event(event);
}

// Identity

QString Scribo::pluginId()
{
    return QStringLiteral("com.qrn.brightfield.poc.Scribo");
}

QString Scribo::displayName()
{
    return QStringLiteral("Scribo");
}

QString Scribo::version()
{
    return tr("V1.4");
}

QString Scribo::description()
{
    return tr(" ");
}

QPixmap Scribo::titleImage()
{
    // Pixmaps belong to the window system: where there is none, making one would end the process.
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) == nullptr) {
        return {};
    }
    return QPixmap(QStringLiteral(":/TitleImage.png"));
}

QList<ParamWrap*>* Scribo::params()
{
    return parameters.list();
}

bool Scribo::reloadModel(QString& out)
{
    out = QStringLiteral("round-reload:") + settings.selectedModel;
    return true;
}

QString Scribo::defectTypeNames()
{
    return QStringLiteral("瑕疵/污点");
}

quint32 Scribo::capabilityFlags()
{
    return 0x80F;
}

LimitPairs Scribo::limitPairs()
{
    return {{{-1, 99}, {-1, 99}, {-1, 99}, {-1, 99}}};
}

ProcessorInterface* Scribo::clone(Tool* tool, bool copyParams)
{
    auto copy = std::make_unique<Scribo>();
    copy->hostTool = tool;
    if (copyParams) {
        QJsonObject values;
        saveParams(values);
        copy->loadParams(values);
    }
    return copy.release();
}

// Inspection

void Scribo::process(Tool* tool, int index)
{
    if (index == 0) {
        cycle = Cycle();
    }
    settings.charCount = -1;
    settings.recognisedText.clear();
    try {
        inspect(tool, index);
    } catch (...) {
        // Out of memory, or a tool of the host's that throws. The item must not pass.
        qCritical() << "Inspecting item" << index << "failed:" << exceptionText();
        recordItem(index, failedItem());
    }
    workingImage.release();
}

bool Scribo::isModelDisabled() const
{
    return settings.modelEnable[1] && !settings.modelEnable[0];
}

void Scribo::inspect(Tool* tool, int index)
{
    if (tool == nullptr) {
        return;
    }
    const QList<QRectF> regions = tool->regions(index);
    if (regions.isEmpty() || (isModelDisabled() && !settings.saveSwitch[0])) {
        return; // nothing to inspect: the item is not recorded
    }

    workingImage = tool->image(index);
    recordsOfItem = 0;
    refreshSaveLocation();
    Item item;
    bool hasInspected = false;
    for (const QRectF& region : regions) {
        if (!isInspected(region)) {
            continue;
        }
        hasInspected = true;
        if (const auto cut = cutRegion(region, pictureSize())) {
            inspectRegion(tool, index, *cut, &item);
        } else {
            missRegion(region, index, &item);
        }
    }
    if (workingImage.empty() && !hasInspected && !isModelDisabled()) {
        // Without a picture an item of which nothing was inspected would pass.
        qWarning() << "Item" << index << "has no picture";
        item = failedItem();
    }
    recordItem(index, item);
}

QString Scribo::unknownError()
{
    return tr("unknown error!");
}

/// An item that could not be inspected at all.
Scribo::Item Scribo::failedItem()
{
    Item item;
    item.isOk = false;
    item.lines.append(messageLine(unknownError(), cv::Rect()));
    return item;
}

cv::Size Scribo::pictureSize() const
{
    if (hostTool == nullptr) {
        return workingImage.size();
    }
    return {hostTool->imageWidth(), hostTool->imageHeight()};
}

cv::Mat Scribo::regionImage(Tool* tool, int index, const cv::Rect& region) const
{
    PosePair pose;
    if (tool->upstreamPose(poseTool, index, &pose)) {
        if (const auto corrected = correctedRegion(workingImage, pose, region)) {
            return *corrected;
        }
    }
    return workingImage(region);
}

/// A region that is taught but does not lie in the picture: the item must not pass unread.
void Scribo::missRegion(const QRectF& region, int index, Item* item)
{
    if (isModelDisabled()) {
        return;
    }
    qWarning() << region << "of item" << index << "is not in its picture";
    item->isOk = false;
    item->lines.append(messageLine(unknownError(), cv::Rect()));
    ++recordsOfItem;
}

void Scribo::inspectRegion(Tool* tool, int index, const RegionCut& region, Item* item)
{
    const int firstLine = item->lines.size();
    cv::Mat image;
    QString message;
    bool isOk = isModelDisabled();
    try {
        image = regionImage(tool, index, region.pixels);
        isOk = isOk || readRegion(image, region.inside, item, &message);
    } catch (...) {
        qWarning() << "Reading a region of item" << index << "failed:" << exceptionText();
        if (!isOk) {
            message += unknownError();
        }
    }
    if (!message.isEmpty()) {
        item->lines.append(messageLine(message, region.pixels));
    }
    item->isOk = item->isOk && isOk;
    archiveRegion(tool, image, *item, firstLine);
}

/// Reads and judges one region. Where it cannot be read, `message` says why.
bool Scribo::readRegion(const cv::Mat& image, const QRectF& region, Item* item, QString* message)
{
    if (!analyser) {
        *message += QStringLiteral("模型文件加载出错") + errorText;
        return false;
    }
    if (!analyser->isInitialized()) {
        *message += analyser->errorMessage() + errorText;
        return false;
    }
    addModelEntry();
    std::vector<SOrgAI_ResInfo> lines;
    if (analyser->execute(image, lines) != 1) {
        *message += unknownError();
        return false;
    }
    return judgeLines(lines, region, item);
}

bool Scribo::judgeLines(const std::vector<SOrgAI_ResInfo>& lines, const QRectF& region, Item* item)
{
    QStringList groups;
    for (const ClassInfo& info : analyser->classes()) {
        groups.append(QString::fromStdString(info.name));
    }
    return LineJudge(settings, groups, analyser->ignoreChar()).judge(lines, region, &item->lines, &item->mismatches);
}

void Scribo::addModelEntry()
{
    const QJsonObject entry{
        {QStringLiteral("type"), QStringLiteral("检测数")},
        {QStringLiteral("model"), static_cast<int>(analyser->classes().size())},
    };
    if (!cycle.modelEntries.contains(entry)) {
        cycle.modelEntries.append(entry);
    }
}

/// Hands the region's picture to the archive, once for each line that the region added to the item: lines without a
/// picture are counted all the same. What goes wrong there changes nothing about the item.
void Scribo::archiveRegion(Tool* tool, const cv::Mat& image, const Item& item, int firstLine)
{
    try {
        QList<SOrgAI_ResInfo> records = item.lines.mid(firstLine);
        if (isModelDisabled()) {
            records.append(SOrgAI_ResInfo());
            records.last().isOk = true;
        }
        for (const SOrgAI_ResInfo& record : std::as_const(records)) {
            archive.savePicture(tool, modelName(), record, ++recordsOfItem, image);
        }
    } catch (...) {
        qWarning() << "Saving the picture of a region failed:" << exceptionText();
    }
}

/// The verdict last, where nothing can fail behind it: an item recorded by halves would be recorded again as failed,
/// and the verdicts of the cycle's later items would answer for the ones before them.
void Scribo::recordItem(int index, const Item& item)
{
    cycle.lines[index] = item.lines;
    cycle.mismatches[index] = item.mismatches;
    cycle.charCounts[index] = settings.charCount;
    cycle.texts[index] = settings.recognisedText;
    cycle.resultFlags.push_back(item.isOk ? 1 : 0);
    if (item.isOk && index >= 0 && index < 32) {
        cycle.okMask |= 1U << index;
    }
}

// Results

bool Scribo::isResultOk(int index)
{
    const auto& flags = cycle.resultFlags;
    if (index == -1) {
        return std::all_of(flags.begin(), flags.end(), [](quint8 flag) { return (flag & 1U) != 0; });
    }
    return index >= 0 && static_cast<std::size_t>(index) < flags.size() && flags[index] == 1;
}

QVariantMap Scribo::resultRecord(int index)
{
    return makeResultRecord(cycle.lines.value(index), settings.charCount, settings.recognisedText);
}

QVariantMap Scribo::resultTemplate()
{
    return makeResultTemplate();
}

void Scribo::drawResult(QPainter* painter, int index)
{
    if (painter == nullptr) {
        return;
    }
    try {
        prepareOverlay(*painter, hostTool != nullptr ? hostTool->imageHeight() : 0);
        if (cycle.lines.contains(index) && cycle.mismatches.contains(index)) {
            drawLines(*painter, cycle.lines[index], cycle.mismatches[index]);
        }
    } catch (...) {
        qWarning() << "Drawing item" << index << "failed:" << exceptionText();
    }
}

// Picture archive

void Scribo::archivePictures(ToolInterface* tool)
{
    refreshSaveLocation();
    if (!hasLoadedAnalyser()) {
        return;
    }
    try {
        std::vector<std::string> classNames;
        for (const ClassInfo& info : analyser->classes()) {
            classNames.push_back(info.name);
        }
        archive.prepareFolders(tool, modelName(), classNames);
    } catch (...) {
        qWarning() << "Preparing the folders of the archive failed:" << exceptionText();
    }
    analyser->detector()->setConfidenceThreshold(confidenceThreshold());
}

float Scribo::confidenceThreshold() const
{
    float threshold = 1.0F;
    for (const ScoreLimit& limit : scoreLimits) {
        if (limit.values[0] < static_cast<double>(threshold)) {
            threshold = static_cast<float>(limit.values[0]);
        }
    }
    return threshold;
}

void Scribo::refreshSaveLocation()
{
    archive.refreshSaveLocation();
}

QStringList Scribo::findRemovableMounts()
{
    return archive.findRemovableMounts();
}

QString Scribo::pictureFolder(ToolInterface* tool, const SOrgAI_ResInfo& record, const QString& toolId)
{
    return archive.pictureFolder(tool, modelName(), record, toolId);
}

void Scribo::queuePicture(ToolInterface* tool, const cv::Mat& image, const QString& path)
{
    archive.queuePicture(tool, image, path);
}

void Scribo::drainPendingPictures()
{
    archive.drainPendingPictures();
}

QImage Scribo::cvMat2QImage(const cv::Mat& mat)
{
    switch (mat.type()) {
    case CV_8UC1:
        return greyImage(mat);
    case CV_8UC3:
        return sharedImage(mat, QImage::Format_RGB888).rgbSwapped();
    case CV_8UC4:
        qDebug() << "CV_8UC4";
        return sharedImage(mat, QImage::Format_ARGB32).copy();
    default:
        qDebug() << "ERROR: Mat could not be converted to QImage.";
        return {};
    }
}
