// An application that ends with pictures still in the queue: queues twenty and returns from main.
// Argument: the folder for the pictures.

#include "picturearchive.h"
#include "pluginsettings.h"
#include "scribo.h"
#include "scriptedtool.h"
#include "testpictures.h"

#include <QCoreApplication>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    ScriptedTool tool;
    PluginSettings settings;
    PictureArchive archive(settings, &Scribo::cvMat2QImage);
    for (int number = 0; number < PictureQueue::maxWaiting; ++number) {
        archive.queuePicture(&tool, numberedPicture(number),
            application.arguments().at(1) + QString("/%1.bmp").arg(number, 6, 10, QChar('0')));
    }
    return 0;
}
