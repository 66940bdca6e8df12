#pragma once

#include "scribo.h"

#include "detector/runtimedouble.h"
#include "scriptedtool.h"
#include "workfolder.h"

#include <QRegularExpression>
#include <QThreadPool>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>

/// What the network reads: indices into the alphabet, from 1.
using Reading = std::vector<int>;

const Reading a1 = {1, 2};
const Reading aa = {1, 1};

/// A model whose alphabet is "A", "1" and "-", of which "-" is ignored. Each test has an engine name of its
/// own, since the process keeps every detector.
class Inspection : public testing::Test
{
protected:
    void SetUp() override
    {
        RuntimeDouble::reset();
        RuntimeDouble::instance().network = [this](NetworkRun& run) { see(run); };
        tool.directory = work.path("station/");
        addModel(modelFile);
        load(modelFile);
    }

    /// The engine NAME_v1.trt and its configuration with as many classes as `classes` names.
    void addModel(const QString& engine, const QByteArray& classes = R"({"name":"1I"})")
    {
        QString configuration = engine;
        work.addModelFile(engine, "engine");
        work.addModelFile(configuration.replace("_v1.trt", ".json"),
            R"({"classes":[)" + classes
                + R"(],"ignore_char":"-","alphabet":"A1-","model_infer_info":{)"
                  R"("input_dims":{"width":320,"height":32},"input_layers":["input"],"output_layers":["output"]}})");
    }

    /// A new instance for the tool, with this model.
    void load(const QString& engine) { load(engine, tool); }
    void load(const QString& engine, Tool& host)
    {
        Scribo root;
        instance.reset(root.clone(&host, false));
        choose(engine);
    }

    void choose(const QString& engine)
    {
        QJsonObject settings;
        instance->saveParams(settings);
        QJsonArray values = settings["paramsWrap"].toArray();
        values[1] = QJsonObject{{"selectedText", engine}};
        instance->loadParams({{"paramsWrap", values}});
    }

    void set(int number, const QJsonValue& value) { instance->params()->at(number - 1)->readJson({{"values", value}}); }

    QJsonValue valueOf(int number)
    {
        QJsonObject object;
        instance->params()->at(number - 1)->writeJson(object);
        return object["values"];
    }

    void compareWith(const QString& reference)
    {
        set(9, QJsonArray{false, true, false});
        set(10, reference);
    }

    /// Processes an item whose regions show these readings, in order.
    void process(int index, std::initializer_list<Reading> shown)
    {
        readings = shown;
        instance->process(&tool, index);
        EXPECT_TRUE(readings.empty()) << "fewer regions were read than expected";
    }

    QVariantList list(int index, const char* key) { return instance->resultRecord(index)[key].toList(); }

    Scribo& scribo() { return *dynamic_cast<Scribo*>(instance.get()); }

    /// The files below the station's folder once all have been written, without date and time, sorted.
    std::vector<std::string> archivedFiles() const
    {
        QThreadPool::globalInstance()->waitForDone();
        std::vector<std::string> files;
        const QDir folder(tool.directory + "AISavePic/" + modelName() + "_C1_T1");
        for (const QString sub : {"OK", "NG/ng", "NG/ng_notype"}) {
            for (QString file : QDir(folder.filePath(sub)).entryList(QDir::Files, QDir::Name)) {
                files.push_back(
                    (sub + "/" + file.replace(QRegularExpression("\\d{4}_\\d{6}_\\d{3}"), "TIME")).toStdString());
            }
        }
        return files;
    }

    /// The picture in a folder that holds only one.
    QImage archivedPicture(const QString& sub) const
    {
        QThreadPool::globalInstance()->waitForDone();
        const QDir folder(tool.directory + "AISavePic/" + modelName() + "_C1_T1/" + sub);
        return QImage(folder.filePath(folder.entryList(QDir::Files).value(0)));
    }

    QString modelName() const { return QString(modelFile).remove("ocr_").remove("_v1.trt"); }

    WorkFolder work;
    ScriptedTool tool;
    std::deque<Reading> readings; ///< still to be seen; an empty text when there is none
    const QString modelFile
        = QString("ocr_%1_p1_1_v1.trt").arg(testing::UnitTest::GetInstance()->current_test_info()->name());
    std::unique_ptr<ProcessorInterface> instance;

private:
    void see(NetworkRun& run)
    {
        Reading classes;
        if (!readings.empty()) {
            for (int character : readings.front()) {
                classes.push_back(character);
                classes.push_back(0); // a blank keeps equal neighbours apart
            }
            readings.pop_front();
        }
        const std::size_t timeSteps = run.outputs[0].size() / 4;
        ASSERT_LE(classes.size(), timeSteps);
        classes.resize(timeSteps);
        run.outputs[0] = scoresOf(classes);
    }
};
