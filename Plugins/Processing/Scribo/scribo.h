#pragma once

#include "parameterset.h"
#include "picturearchive.h"
#include "pluginsettings.h"
#include "processorinterface.h"
#include "resinfo.h"
#include "scorelimits.h"

#include <QImage>
#include <QJsonArray>
#include <QMap>
#include <QObject>

#include <memory>
#include <vector>

class OCRAnalyser;
struct InspectedItem;

/// The plug-in as the host sees it: reads the text in the regions of each item and judges it.
///
/// Holds the state that the host can ask for and hands each concern to a class of its own. Nothing that
/// the host calls throws. Operations that belong to other kinds of processor answer with an empty value.
///
/// A host that keeps score limits sets them as the dynamic property "scoreLimits" of this object, in the form that
/// readScoreLimits() reads. There is none at first.
class Scribo : public QObject, public ProcessorInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "com.qrn.brightfield.poc.Scribo")
    Q_INTERFACES(ProcessorInterface)

public:
    Scribo();
    /// Does not wait for pictures that are still being written.
    ~Scribo() override;

    void loadParams(const QJsonObject& settings) override;
    void saveParams(QJsonObject& settings) override;

    QString pluginId() override;
    QString displayName() override;
    QString version() override;
    QString description() override;
    QPixmap titleImage() override;

    QList<ParamWrap*>* params() override;
    bool reloadModel(QString& out) override;
    void* reserved11() override { return nullptr; }
    QString defectTypeNames() override;
    void archivePictures(ToolInterface* tool) override;
    void reserved14() override { }
    void process(Tool* tool, int index) override;
    ProcessorInterface* clone(Tool* hostTool, bool copyParams) override;
    quint32 capabilityFlags() override;
    bool isResultOk(int index) override;
    QVariantMap resultRecord(int index) override;
    QVariantMap resultTemplate() override;
    QString reserved21() override { return {}; }
    QString reserved22() override { return {}; }
    bool reserved23() override { return false; }
    bool reserved24() override { return false; }
    void reserved25() override { }
    void reserved26() override { }
    void reserved27() override { }
    QString reserved28() override { return {}; }
    bool reserved29() override { return false; }
    void* reserved30() override { return nullptr; }
    bool reserved31() override { return false; }
    bool reserved32() override { return false; }
    void reserved33() override { }
    void drawResult(QPainter* painter, int index) override;
    QString reserved35() override { return {}; }
    void reserved36() override { }
    LimitPairs limitPairs() override;

    /// The operations of the picture archive, for code that uses it without an inspection. See PictureArchive.
    void refreshSaveLocation();
    QStringList findRemovableMounts();
    QString pictureFolder(ToolInterface* tool, const SOrgAI_ResInfo& record, const QString& toolId);
    void queuePicture(ToolInterface* tool, const cv::Mat& image, const QString& path);
    void drainPendingPictures();

    /// A copy of `mat` as an image: CV_8UC1 as 256 greys, CV_8UC3 with red and blue exchanged, CV_8UC4 as
    /// ARGB32. Null for any other type. Thread-safe.
    static QImage cvMat2QImage(const cv::Mat& mat);

    /// Bit i: item i of the cycle was OK. Items beyond 31 have no bit. The plug-in itself does not read it.
    quint32 okMask() const { return cycle.okMask; }
    /// The models that took part in the cycle, once each: "type" is "检测数" (detection count), "model" the
    /// number of the model's classes.
    QJsonArray modelEntries() const { return cycle.modelEntries; }

protected:
    bool event(QEvent* event) override;

private:
    /// What the host can ask for until index 0 starts the next cycle.
    struct Cycle
    {
        QJsonArray modelEntries;
        QMap<int, QList<SOrgAI_ResInfo>> lines; ///< by item index
        QMap<int, QList<int>> mismatches; ///< by item index
        // Each item's own count and text, for those who need them later: a record has the ones of the last item.
        QMap<int, int> charCounts; ///< by item index
        QMap<int, QString> texts; ///< by item index
        std::vector<quint8> resultFlags; ///< 0 or 1, in the order of processing
        quint32 okMask = 0;
    };

    void createAnalyser();
    bool hasLoadedAnalyser() const;
    QString modelName() const;

    void inspect(Tool* tool, int index);
    cv::Size pictureSize() const;
    void addModelEntry();
    void recordItem(int index, const InspectedItem& item);

    PluginSettings settings;
    ParameterSet parameters;
    PictureArchive archive;
    std::unique_ptr<OCRAnalyser> analyser; ///< null until a model has been chosen
    QString errorText;
    Tool* hostTool = nullptr; ///< not owned; null for the plug-in's root object
    std::vector<ScoreLimit> scoreLimits;
    cv::Mat workingImage; ///< the picture of the item being inspected; shares the host's pixels
    Cycle cycle;
};
