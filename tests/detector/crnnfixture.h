#pragma once

#include "crnntrtdetector.h"

#include "logcapture.h"
#include "runtimedouble.h"

#include <QFile>
#include <QTemporaryDir>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

/// A CRNN detector whose protected members the tests can reach.
class CrnnProbe : public CRNNTRTDetector
{
public:
    using CRNNTRTDetector::config;
    using CRNNTRTDetector::CRNNTRTDetector;
    using CRNNTRTDetector::infer;
    using CRNNTRTDetector::outputs;
};

/// An engine file, and the configuration of a network of height 32 and width up to 320 that reads
/// A, B and D.
class CrnnDetector : public ::testing::Test
{
protected:
    void SetUp() override
    {
        RuntimeDouble::reset();
        config.width = 320;
        config.height = 32;
        config.input_layers = {"input"};
        config.output_layers = {"output"};
        config.alphabet = {"A", "B", "D"};
        enginePath = writeEngine("serialised engine");
    }

    std::string writeEngine(const QByteArray& bytes)
    {
        QFile file(folder.filePath("ocr_a_b_c_d.trt"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return file.fileName().toStdString();
    }

    /// A detector whose worker has written its first line.
    std::unique_ptr<CrnnProbe> makeDetector() const
    {
        LogCapture log;
        auto detector = std::make_unique<CrnnProbe>(enginePath, config);
        EXPECT_TRUE(log.waitFor("OCR detector inference thread started."));
        return detector;
    }

    /// The network reads `classes`, one per time step from the first.
    static void networkReads(const std::vector<int>& classes)
    {
        RuntimeDouble::instance().network = [classes](NetworkRun& run) {
            const std::vector<float> scores = scoresOf(classes);
            ASSERT_LE(scores.size(), run.outputs[0].size());
            std::copy(scores.begin(), scores.end(), run.outputs[0].begin());
        };
    }

    RuntimeDouble& runtime = RuntimeDouble::instance();
    QTemporaryDir folder;
    std::string enginePath;
    DetectorConfig config;
};
