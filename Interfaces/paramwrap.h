#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>
