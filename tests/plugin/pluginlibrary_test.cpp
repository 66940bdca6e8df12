// The built library, loaded the way a host loads it.

#include "processorinterface.h"

#include <QFile>
#include <QPluginLoader>
#include <QProcess>

#include <gtest/gtest.h>

namespace {

const QString libraryFile = QStringLiteral(SCRIBO_PLUGIN_FILE);

} // namespace

TEST(PluginLibrary, CarriesItsIdentityAndNothingElse)
{
    const QJsonObject metaData = QPluginLoader(libraryFile).metaData();
    EXPECT_EQ(metaData["IID"], "com.qrn.brightfield.poc.Scribo");
    EXPECT_EQ(metaData["className"], "Scribo");
    EXPECT_FALSE(metaData["debug"].toBool());
    EXPECT_FALSE(metaData.contains("MetaData"));

    QFile file(libraryFile);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    // Version 0, Qt 5.15, release; then a CBOR map of indefinite length: 2 → text of 30, 3 → text of 6.
    const QByteArray expected = QByteArray("QTMETADATA !", 12) + QByteArray("\x00\x05\x0f\x00\xbf\x02\x78\x1e", 8)
        + "com.qrn.brightfield.poc.Scribo" + QByteArray("\x03\x66", 2) + "Scribo" + "\xff";
    EXPECT_TRUE(file.readAll().contains(expected));
}

TEST(PluginLibrary, ShowsItsEntryPointsOnly)
{
    QProcess nm;
    nm.start("nm", {"--dynamic", "--defined-only", "--format=posix", libraryFile});
    ASSERT_TRUE(nm.waitForFinished()) << nm.errorString().toStdString();
    QStringList names;
    for (const QString& line : QString::fromUtf8(nm.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts)) {
        names.append(line.section(' ', 0, 0));
    }
    names.sort();
    EXPECT_EQ(names, (QStringList{"NvOptimusEnablementCuda", "qt_plugin_instance", "qt_plugin_query_metadata"}));
}

TEST(PluginLibrary, ExportsTheRequestForTheDiscreteGpu)
{
    QLibrary library(libraryFile);
    const auto* flag = reinterpret_cast<const quint32*>(library.resolve("NvOptimusEnablementCuda"));
    ASSERT_NE(flag, nullptr) << library.errorString().toStdString();
    EXPECT_EQ(*flag, 1U);
}

TEST(PluginLibrary, MakesANewRootWhenTheOldOneIsGone)
{
    QLibrary library(libraryFile);
    using Instance = QObject* (*)();
    const auto instance = reinterpret_cast<Instance>(library.resolve("qt_plugin_instance"));
    ASSERT_NE(instance, nullptr);
    QObject* const first = instance();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(instance(), first);
    EXPECT_EQ(first->parent(), nullptr);
    bool destroyed = false;
    QObject::connect(first, &QObject::destroyed, [&destroyed] { destroyed = true; });
    delete first;
    EXPECT_TRUE(destroyed);
    QObject* const second = instance();
    ASSERT_NE(second, nullptr);
    EXPECT_STREQ(second->metaObject()->className(), "Scribo");
    EXPECT_EQ(instance(), second);
    delete second;
}

TEST(PluginLibrary, GivesItsRootAsAProcessor)
{
    QPluginLoader loader(libraryFile);
    auto* const processor = qobject_cast<ProcessorInterface*>(loader.instance());
    ASSERT_NE(processor, nullptr) << loader.errorString().toStdString();
    EXPECT_EQ(processor->pluginId(), "com.qrn.brightfield.poc.Scribo");
    EXPECT_EQ(processor->titleImage().size(), QSize(256, 256));
    delete loader.instance();
}
