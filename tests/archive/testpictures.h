#pragma once

#include "resinfo.h"

#include <QImage>
#include <QString>
#include <QStringList>

#include <opencv2/core/mat.hpp>

/// A grey picture that no other number has; pictureNumber() reads the number back.
cv::Mat numberedPicture(int number, cv::Size size = {37, 11});
int pictureNumber(const cv::Mat& picture);

/// Whether the BMP at `path` loads and shows exactly `picture` (grey, or three channels in red, green, blue order).
bool fileShows(const QString& path, const cv::Mat& picture);

/// The names of all files in `folder`, hidden ones too, in order.
QStringList filesIn(const QString& folder);

/// Puts `count` small files into `folder`, which is created.
void fillFolder(const QString& folder, int count);

SOrgAI_ResInfo okRecord(const std::string& text = "LOT4827");
SOrgAI_ResInfo ngRecord(int classIndex, const std::string& text = "LOT4827");
