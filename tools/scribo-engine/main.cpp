#include "commands/tool.h"

#include <QCoreApplication>

#include <iostream>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    return scribo::tool::run(QCoreApplication::arguments().mid(1), {std::cout, std::cerr});
}
