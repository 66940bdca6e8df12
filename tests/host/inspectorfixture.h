#pragma once

#include "errortext.h"
#include "inspector.h"
#include "parameters.h"
#include "station.h"

#include <gtest/gtest.h>

#include <QDir>

/// An inspector over the fake processor, in a working directory with two models.
class InspectorFixture : public testing::Test
{
protected:
    void SetUp() override
    {
        station.write("model/ocr_a_p1_1_v2.trt", {});
        QDir::setCurrent(station.path("."));
        inspector = makeInspector();
        ASSERT_NE(inspector, nullptr);
        processor = &inspector->processor();
    }

    void TearDown() override { QDir::setCurrent("/"); }

    static std::unique_ptr<scribo::host::Inspector> makeInspector()
    {
        auto made = scribo::host::ProcessorPlugin::load(FAKE_PROCESSOR_FILE).and_then(&scribo::host::Inspector::make);
        EXPECT_EQ(errorText(made), "");
        return made ? std::move(*made) : nullptr;
    }

    QString set(int number, const QString& value)
    {
        return errorText(scribo::host::setParameter(*processor, number, value));
    }

    QString describe(int number) { return scribo::host::describeParameter(*processor->params()->at(number - 1)); }

    Station station;
    std::unique_ptr<scribo::host::Inspector> inspector;
    ProcessorInterface* processor = nullptr; ///< the inspector's
};
