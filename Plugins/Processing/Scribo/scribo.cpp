#include "scribo.h"

#include "exceptiontext.h"
#include "iteminspection.h"
#include "modellist.h"
#include "ocranalyser.h"
#include "ocrdetector.h"
#include "resultoverlay.h"
#include "resultrecord.h"

#include <QDebug>
#include <QDynamicPropertyChangeEvent>
#include <QGuiApplication>

#include <algorithm>

namespace {

const QString paramsKey = QStringLiteral("paramsWrap");
constexpr char scoreLimitsProperty[] = "scoreLimits";

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
    // Restored a second time: the saved values win over what loading the model has changed.
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
    // Without a window system, creating a pixmap would end the process.
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
        recordItem(index, InspectedItem::failed());
    }
    workingImage.release();
}

void Scribo::inspect(Tool* tool, int index)
{
    if (tool == nullptr) {
        qWarning() << "Item" << index << "was handed over without a tool";
        recordItem(index, InspectedItem::failed());
        return;
    }
    const QList<QRectF> regions = tool->regions(index);
    if (regions.isEmpty() || (settings.isModelDisabled() && !settings.saveSwitch[0])) {
        return; // nothing to inspect: the item is not recorded
    }

    workingImage = tool->image(index);
    refreshSaveLocation();
    ItemInspection inspection(
        {settings, archive, analyser.get(), errorText}, *tool, index, workingImage, pictureSize());
    const InspectedItem item = inspection.inspect(regions);
    if (item.isRead) {
        addModelEntry();
    }
    recordItem(index, item);
}

cv::Size Scribo::pictureSize() const
{
    if (hostTool == nullptr) {
        return workingImage.size();
    }
    return {hostTool->imageWidth(), hostTool->imageHeight()};
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

/// Adds the verdict last, when nothing else can fail. An item that is recorded only in part would be recorded again as
/// failed, and with two verdicts for one item those of later items would be found under wrong indices.
void Scribo::recordItem(int index, const InspectedItem& item)
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
    analyser->detector()->setConfidenceThreshold(confidenceThreshold(scoreLimits));
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
