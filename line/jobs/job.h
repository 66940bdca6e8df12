#pragma once

#include "align/alignmentsettings.h"
#include "rules/textsettings.h"
#include "taughtregion.h"

#include <QJsonObject>
#include <QList>
#include <QRectF>
#include <QString>

#include <opencv2/core/mat.hpp>
#include <optional>

namespace scribo::line {

/// One line of text on the product.
struct JobRegion
{
    QString name; ///< for people and records; unique in the job
    QRectF rect; ///< pixels of the taught picture
    QString expected; ///< a template, see docs/expected-text.md; empty: any text is right
    std::optional<host::CountRange> count; ///< how many characters the reading may have
};

/// Where the part is looked for.
struct JobAlignment
{
    AlignmentSettings settings;
    cv::Mat patch; ///< 8 bits, grey
};

/// What is inspected on one product, as its folder says.
struct Job
{
    QString folder;
    QString name; ///< unique in the station
    int number = 0; ///< by which a PLC chooses it, 1 to 65535; unique in the station
    QString model; ///< file name of the engine in the station's model folder
    QJsonObject settings; ///< of the plug-in; empty: its defaults
    QJsonObject source; ///< see PictureSource::configure()
    QList<JobRegion> regions; ///< at least one
    TextSettings text; ///< what the templates of the regions need
    std::optional<JobAlignment> alignment; ///< none: the part does not move
    bool requiresValidation = false; ///< live only after its pictures have passed
    QString hash; ///< SHA-256 of the files that make the job, in hexadecimal digits
};

} // namespace scribo::line
