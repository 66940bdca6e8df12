// Runs an engine in Scribo's CPU runtime, as worker.py describes it.
#include "enginerunner.h"
#include "filebytes.h"
#include "resulttext.h"

#include <QElapsedTimer>
#include <QFile>
#include <QStringList>
#include <QTextStream>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

using scribo::textOf;
using scribo::tool::EngineRunner;
using scribo::tool::FileBytes;

double microseconds(const QElapsedTimer& timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1000;
}

[[noreturn]] void fail(const QString& reason)
{
    std::fprintf(stderr, "runtime_worker: %s\n", qPrintable(reason));
    std::exit(1);
}

std::vector<float> readValues(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        fail(file.errorString());
    }
    std::vector<float> values(static_cast<std::size_t>(file.size()) / sizeof(float));
    const auto bytes = static_cast<qint64>(values.size() * sizeof(float));
    if (file.read(reinterpret_cast<char*>(values.data()), bytes) != bytes) {
        fail(file.errorString());
    }
    return values;
}

void writeValues(const QString& path, const std::vector<float>& values)
{
    QFile file(path);
    const auto bytes = static_cast<qint64>(values.size() * sizeof(float));
    if (!file.open(QIODevice::WriteOnly) || file.write(reinterpret_cast<const char*>(values.data()), bytes) != bytes) {
        fail(file.errorString());
    }
}

class Worker
{
public:
    QList<double> load(const QString& path)
    {
        QElapsedTimer timer;
        timer.start();
        bytes = FileBytes::read(path);
        runner = std::make_unique<EngineRunner>();
        const auto loaded
            = bytes.and_then([this](const FileBytes& engine) { return runner->load(engine.data(), engine.size()); });
        if (!loaded) {
            fail(textOf(loaded.error()));
        }
        return {microseconds(timer)};
    }

    QList<double> run(const QStringList& words)
    {
        const std::vector<float> picture = readValues(words.at(0));
        const int width = words.at(3).toInt();
        std::vector<float> scores;
        QList<double> times;
        for (int i = 0; i < words.at(4).toInt(); ++i) {
            QElapsedTimer timer;
            timer.start();
            auto outputs = runner->run(width, picture);
            if (!outputs) {
                fail(textOf(outputs.error()));
            }
            times.append(microseconds(timer));
            scores = std::move(outputs->front().values);
        }
        writeValues(words.at(5), scores);
        return times;
    }

private:
    scribo::Result<FileBytes> bytes = scribo::failure("no engine is loaded");
    std::unique_ptr<EngineRunner> runner;
};

} // namespace

int main()
{
    Worker worker;
    QTextStream input(stdin);
    QTextStream output(stdout);
    for (QString line; input.readLineInto(&line);) {
        QStringList words = line.split('\t');
        const QString command = words.takeFirst();
        QStringList answer;
        for (const double time : command == "load" ? worker.load(words.at(0)) : worker.run(words)) {
            answer.append(QString::number(time, 'f', 1));
        }
        output << answer.join(' ') << Qt::endl;
    }
    return 0;
}
