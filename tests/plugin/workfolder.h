#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

/// A working directory for one test, with a model folder in it, until the object is destroyed.
class WorkFolder
{
public:
    WorkFolder()
        : before(QDir::currentPath())
    {
        QDir(folder.path()).mkdir(QStringLiteral("model"));
        QDir::setCurrent(folder.path());
    }
    ~WorkFolder() { QDir::setCurrent(before); }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    QString path(const QString& name) const { return folder.filePath(name); }

    void addModelFile(const QString& name, const QByteArray& content = "x")
    {
        QFile file(path("model/" + name));
        file.open(QIODevice::WriteOnly);
        file.write(content);
    }

private:
    QTemporaryDir folder;
    QString before;
};
