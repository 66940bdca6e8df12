#pragma once

#include "processorinterface.h"

#include <QObject>

/// The processor that the host is tested with. It has the parameters of a text reader and takes its readings from a
/// script.
///
/// The models are the files "model/*.trt" of the working directory. The reading of the n-th item is the n-th
/// line of the file "readings" there; the last line is repeated. A line is a text; "!MESSAGE" for a region that cannot
/// be read; "@pixel" for the red, green and blue of the picture's first pixel; "@pose" for where the part is, its x
/// and y. A reading "(lost)" never reaches the archive.
class FakeProcessor : public QObject, public ProcessorInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "test.fakeprocessor")
    Q_INTERFACES(ProcessorInterface)

public:
    FakeProcessor();
    ~FakeProcessor() override { qDeleteAll(parameters); }

    void loadParams(const QJsonObject& settings) override;
    void saveParams(QJsonObject& settings) override;
    QString pluginId() override { return "test.fakeprocessor"; }
    QString displayName() override { return "Fake"; }
    QString version() override { return "1"; }
    QString description() override { return {}; }
    QPixmap titleImage() override { return {}; }
    QList<ParamWrap*>* params() override { return &parameters; }
    bool reloadModel(QString&) override { return true; }
    void* reserved11() override { return nullptr; }
    QString defectTypeNames() override { return {}; }
    void archivePictures(ToolInterface*) override { }
    void reserved14() override { }
    void process(Tool* tool, int index) override;
    ProcessorInterface* clone(Tool* hostTool, bool copyParams) override;
    quint32 capabilityFlags() override { return 0; }
    bool isResultOk(int index) override;
    QVariantMap resultRecord(int index) override;
    QVariantMap resultTemplate() override { return {}; }
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
    LimitPairs limitPairs() override { return {}; }

private:
    struct Item
    {
        bool isOk = true;
        QRect box;
        double score = 1;
        QString text;
    };

    QString nextReading(Tool& tool, int index);
    bool judge();
    void archivePicture(Tool* tool, bool isOk);

    QList<ParamWrap*> parameters;
    QStringList models;
    QString model;
    bool enable[2] = {true, false};
    QString enableNames[2] = {"enable", "disable"};
    bool save[2] = {false, false};
    QString saveNames[2] = {"save OK", "save NG"};
    int saved[2] = {0, 0};
    int saveLow[2] = {0, 0};
    int saveLimit[2] = {1000, 1000};
    int smallest = 0;
    int largest = 9999;
    int step = 1;
    QString savePath;
    bool compare[3] = {true, false, false};
    QString compareNames[3] = {"off", "固定字符", "auto"};
    QString reference;
    QString text;
    int count = 0;
    int countLow = 0;
    int countHigh = 99999;
    int processed = 0;
    QList<Item> items;
};
