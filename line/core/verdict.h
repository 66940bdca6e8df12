#pragma once

#include <QDateTime>
#include <QList>
#include <QRectF>
#include <QString>

#include <cstdint>
#include <memory>
#include <opencv2/core/mat.hpp>

namespace scribo::line {

/// Why an item is NG, as numbers that a PLC sees. They are part of the protocol: new ones are added, none changes.
enum class Reason : std::uint16_t {
    none = 0, ///< the item is OK
    textDiffers = 1, ///< a reading is not what was expected
    characterCount = 2, ///< a reading has too few or too many characters
    unreadable = 3, ///< a region could not be read
    ruleNotMet = 4, ///< a reading does not fit the rule of its region
    unsure = 5, ///< a reading is less probable than the job demands
    noPicture = 10, ///< the source gave no picture in time
    incompletePicture = 11, ///< pixels were missing
    cameraLost = 12, ///< the source is not connected
    sourceEnded = 13, ///< the folder or film has no more pictures
    partNotFound = 20, ///< the alignment patch was not found, or not well enough
    regionOutside = 21, ///< a region does not lie in the picture
    deadlinePassed = 30, ///< the verdict was not there in time
    overrun = 31, ///< more triggers came than can wait
    noJob = 40, ///< no job is chosen, or the chosen one cannot be used
    internalFault = 41, ///< something failed that should not: the log has more
    stopped = 42, ///< the engine was stopped before the item was judged
    unknownCommand = 43, ///< of a PLC: there is no command of this code
};

/// What was read in one region of an item.
struct RegionReading
{
    int region = 0; ///< from 0, in the order of the job
    QString name; ///< of the region, in the job
    QRectF rect; ///< pixels of the aligned picture
    QString text;
    QString expected; ///< empty: nothing was expected
    bool isOk = false;
    Reason reason = Reason::none;
    QString reasonText; ///< for people; empty when OK
    double milliseconds = 0; ///< that reading took
};

/// A picture that is shared by those who draw, store or send it. Nobody changes its pixels.
using SharedPicture = std::shared_ptr<const cv::Mat>;

/// The answer to one trigger. Every trigger has exactly one, in the order of the triggers.
struct Verdict
{
    std::uint64_t sequence = 0; ///< from 1; one more with each trigger; a restart leaves some out but repeats none
    QDateTime takenAt; ///< when the picture was taken, else when the trigger came; UTC
    QString job; ///< the job's name; empty: none
    int jobNumber = 0;
    QString jobHash; ///< of the job's files, SHA-256 in hexadecimal digits
    QString modelHash; ///< of the model's engine file, the same
    bool isOk = false;
    Reason reason = Reason::internalFault;
    QString reasonText; ///< for people; empty when OK
    QList<RegionReading> readings;
    double milliseconds = 0; ///< from the trigger to this verdict
    double processMilliseconds = 0; ///< of it, in the plug-in
    QString pictureName; ///< as the source named it
    SharedPicture picture; ///< aligned, as the plug-in got it; null: there was none
};

/// The readings' texts in the order of the regions, joined by line feeds.
QString joinedTexts(const Verdict& verdict);

} // namespace scribo::line
