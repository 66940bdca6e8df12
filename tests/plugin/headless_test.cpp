// The built library in a process without a window system, as a service or a command-line tool loads it.

#include "processorinterface.h"

#include <QCoreApplication>
#include <QPluginLoader>

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <memory>

TEST(HeadlessPlugin, WorksWithoutAWindowSystemAndStaysWhenUnloaded)
{
    const QString libraryFile = QStringLiteral(SCRIBO_PLUGIN_FILE);
    QPluginLoader loader(libraryFile);
    auto* const root = qobject_cast<ProcessorInterface*>(loader.instance());
    ASSERT_NE(root, nullptr) << loader.errorString().toStdString();
    EXPECT_EQ(root->displayName(), "Scribo");
    EXPECT_TRUE(root->titleImage().isNull());

    const std::unique_ptr<ProcessorInterface> copy(root->clone(nullptr, true));
    copy->process(nullptr, 0);
    EXPECT_FALSE(copy->isResultOk(-1)) << "an item without a tool has failed";
    EXPECT_EQ(copy->params()->size(), 13);

    // A detector's worker would go on running in a library that is gone.
    loader.unload();
    EXPECT_NE(dlopen(libraryFile.toUtf8().constData(), RTLD_NOW | RTLD_NOLOAD), nullptr);
    EXPECT_EQ(copy->pluginId(), "com.qrn.brightfield.poc.Scribo");
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
