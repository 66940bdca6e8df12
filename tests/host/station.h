#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <opencv2/core/mat.hpp>

/// A working directory with one model, in which the command runs over the fake processor.
class Station
{
public:
    Station();

    QString path(const QString& name) const { return folder.filePath(name); }
    void write(const QString& name, const QByteArray& bytes) const;
    QByteArray read(const QString& name) const;
    /// A picture file, by default a grey one of 100 x 50.
    void writePicture(const QString& name, const cv::Mat& picture = cv::Mat(50, 100, CV_8UC1, cv::Scalar(128))) const;

    struct Outcome
    {
        int code = -1;
        QByteArray output;
        QByteArray errors;
    };
    /// Runs scribo-inspect in the folder. `errorFile` and `outputFile` take the errors and the output
    /// instead, if they are given.
    Outcome run(const QStringList& arguments, const QString& errorFile = {}, const QString& outputFile = {}) const;

private:
    QTemporaryDir folder;
};
