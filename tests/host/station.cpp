#include "station.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

Station::Station()
{
    write("model/ocr_a_p1_1_v1.trt", {});
}

void Station::write(const QString& name, const QByteArray& bytes) const
{
    QDir().mkpath(QFileInfo(path(name)).path());
    QFile file(path(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(name);
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QByteArray Station::read(const QString& name) const
{
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void Station::writePicture(const QString& name, const cv::Mat& picture) const
{
    QDir().mkpath(QFileInfo(path(name)).path());
    ASSERT_TRUE(cv::imwrite(path(name).toStdString(), picture)) << qPrintable(name);
}

Station::Outcome Station::run(const QStringList& arguments, const QString& errorFile, const QString& outputFile) const
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("SCRIBO_PLUGIN", FAKE_PROCESSOR_FILE);
    environment.insert("TMPDIR", folder.path());
    environment.insert("XDG_RUNTIME_DIR", folder.path()); // or Qt makes a folder of its own
    environment.insert("LC_ALL", "C");
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder.path());
    if (!errorFile.isEmpty()) {
        process.setStandardErrorFile(errorFile);
    }
    if (!outputFile.isEmpty()) {
        process.setStandardOutputFile(outputFile);
    }
    process.start(SCRIBO_INSPECT_FILE, arguments);
    EXPECT_TRUE(process.waitForFinished(120'000));
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAllStandardOutput(),
        process.readAllStandardError()};
}
