#include "scenes.h"

#include <QtMath>

#include <opencv2/imgproc.hpp>
#include <string>

using scribo::line::PartPose;

namespace scenes {

namespace {

/// The label's rectangle in the taught picture.
const cv::Rect labelRect(400, 352, 480, 320);
/// Drawings are this many times as large as what they become.
constexpr int fine = 2;

std::string randomWord(cv::RNG& random, int length)
{
    static const std::string letters = "ABCDEFGHJKLMNPRSTUVWXYZ23456789";
    std::string word;
    for (int i = 0; i < length; ++i) {
        word += letters[static_cast<std::size_t>(random.uniform(0, static_cast<int>(letters.size())))];
    }
    return word;
}

cv::Scalar grey(cv::RNG& random, int from, int to)
{
    const int value = random.uniform(from, to);
    return {static_cast<double>(value + random.uniform(-15, 16)), static_cast<double>(value),
        static_cast<double>(value + random.uniform(-15, 16))};
}

void disturb(cv::Mat& picture, const Disturbance& disturbance, cv::RNG& random)
{
    if (disturbance.blur > 0) {
        cv::GaussianBlur(picture, picture, {}, disturbance.blur);
    }
    cv::Mat values;
    picture.convertTo(values, CV_16S, disturbance.gain, disturbance.offset);
    if (disturbance.noise > 0) {
        cv::Mat noise(picture.size(), CV_16SC3);
        random.fill(noise, cv::RNG::NORMAL, 0, disturbance.noise);
        values += noise;
    }
    values.convertTo(picture, CV_8U);
}

void addGlare(cv::Mat& picture, const QRect& patch, const PartPose& pose, cv::RNG& random)
{
    const QPointF middle(random.uniform(patch.left(), patch.right()), random.uniform(patch.top(), patch.bottom()));
    const QPointF at = foundPoint(pose, middle);
    cv::Mat spot(picture.size(), CV_8UC3, cv::Scalar::all(0));
    const cv::Size axes(static_cast<int>(patch.width() * random.uniform(0.1, 0.25)),
        static_cast<int>(patch.height() * random.uniform(0.1, 0.3)));
    cv::ellipse(spot, cv::Point(static_cast<int>(at.x()), static_cast<int>(at.y())), axes, random.uniform(0, 180), 0,
        360, cv::Scalar::all(255), cv::FILLED);
    cv::blur(spot, spot, {15, 15});
    picture += spot;
}

} // namespace

Label::Label(std::uint64_t seed)
    : seed(seed)
    , drawing(labelRect.height * fine, labelRect.width * fine, CV_8UC3)
{
    cv::RNG random(seed * 7919 + 17);
    drawing = grey(random, 190, 230);
    ink = grey(random, 20, 80);
    const cv::Size size = drawing.size();
    cv::rectangle(drawing, {12, 12}, {size.width - 13, size.height - 13}, ink, 4);

    // What is taught, and something of its kind beside it.
    const int kind = static_cast<int>(seed % 3);
    drawPatchKind(kind, {60, 60}, seed * 2 + 1);
    drawPatchKind(kind, {60, 260}, seed * 2 + 2);
    const QPoint origin(labelRect.x, labelRect.y);
    patchRect = QRect(origin + QPoint(24, 24), QSize(kind == 1 ? 104 : 184, 96));

    const int lines = random.uniform(3, 5);
    for (int i = 0; i < lines; ++i) {
        const cv::Point at(460, 130 + i * 110);
        text(randomWord(random, 4) + ' ' + randomWord(random, 5), at, 1.6, 3);
        regionRects << QRectF(origin + QPoint(at.x / fine - 8, at.y / fine - 28), QSizeF(220, 40));
    }
    text("BEST BEFORE " + randomWord(random, 6), {60, 540}, 1.5, 3);
    regionRects << QRectF(origin + QPoint(24, 244), QSizeF(420, 36));
    for (int x = 60; x < 400; x += random.uniform(8, 20)) {
        cv::rectangle(drawing, {x, 440}, {x + random.uniform(2, 7), 480}, ink, cv::FILLED);
    }
}

void Label::text(const std::string& words, cv::Point at, double size, int thickness)
{
    cv::putText(drawing, words, at, cv::FONT_HERSHEY_SIMPLEX, size, ink, thickness, cv::LINE_AA);
}

void Label::drawPatchKind(int kind, cv::Point at, std::uint64_t seed)
{
    if (kind == 0) {
        drawLogo(at, seed);
    } else if (kind == 1) {
        drawCode(at, seed);
    } else {
        drawBrand(at, seed);
    }
}

void Label::drawLogo(cv::Point at, std::uint64_t seed)
{
    cv::RNG random(seed * 104729 + 3);
    std::vector<cv::Point> outline;
    const int corners = random.uniform(3, 7);
    const double start = random.uniform(0.0, 6.28);
    for (int i = 0; i < corners; ++i) {
        const double angle = start + 2 * CV_PI * i / corners;
        const double arm = random.uniform(45.0, 75.0);
        outline.emplace_back(
            at.x + 80 + static_cast<int>(arm * std::cos(angle)), at.y + 75 + static_cast<int>(arm * std::sin(angle)));
    }
    cv::fillPoly(drawing, std::vector<std::vector<cv::Point>>{outline}, ink, cv::LINE_AA);
    cv::circle(drawing, {at.x + 80 + random.uniform(-20, 21), at.y + 75 + random.uniform(-20, 21)},
        random.uniform(12, 25), cv::Scalar::all(220), cv::FILLED, cv::LINE_AA);
    text(randomWord(random, 3), {at.x + 170, at.y + 80}, random.uniform(1.8, 2.4), random.uniform(4, 7));
    text(randomWord(random, 7), {at.x + 170, at.y + 140}, 1.1, 2);
}

void Label::drawCode(cv::Point at, std::uint64_t seed)
{
    cv::RNG random(seed * 15485863 + 5);
    constexpr int cells = 16;
    constexpr int cell = 10;
    for (int y = 0; y < cells; ++y) {
        for (int x = 0; x < cells; ++x) {
            const bool isFinder = x == 0 || y == cells - 1 || (y == 0 && x % 2 == 0) || (x == cells - 1 && y % 2 == 1);
            const bool inside = x > 0 && x < cells - 1 && y > 0 && y < cells - 1;
            if (isFinder || (inside && random.uniform(0, 2) == 1)) {
                cv::rectangle(
                    drawing, cv::Rect(at.x + 10 + x * cell, at.y + 5 + y * cell, cell, cell), ink, cv::FILLED);
            }
        }
    }
}

void Label::drawBrand(cv::Point at, std::uint64_t seed)
{
    cv::RNG random(seed * 32452843 + 11);
    text(randomWord(random, 6), {at.x + 5, at.y + 75}, 2.4, 6);
    text(randomWord(random, 5) + ' ' + randomWord(random, 6), {at.x + 5, at.y + 145}, 1.3, 3);
}

/// Puts a drawing of the size of a label on the picture, where the label is at `pose`.
void Label::lay(cv::Mat& picture, const cv::Mat& drawing, const PartPose& pose) const
{
    const QPointF corner = foundPoint(pose, QPointF(labelRect.x, labelRect.y));
    const double angle = qDegreesToRadians(pose.turn);
    // From a pixel of the drawing to one of the picture, both counted from the middle of the first.
    const double cosine = std::cos(angle) / fine;
    const double sine = std::sin(angle) / fine;
    const cv::Matx23d matrix(cosine, -sine, corner.x() + 0.5 * (cosine - sine) - 0.5, sine, cosine,
        corner.y() + 0.5 * (sine + cosine) - 0.5);
    cv::Mat soft;
    cv::GaussianBlur(drawing, soft, {}, 0.8);
    cv::warpAffine(soft, picture, matrix, picture.size(), cv::INTER_LINEAR, cv::BORDER_TRANSPARENT);
}

cv::Mat Label::picture(const PartPose& pose, std::uint64_t belt, const Disturbance& disturbance) const
{
    cv::RNG random(belt * 6700417 + seed);
    cv::Mat picture = scenes::belt(belt);
    if (belt % 2 == 1) {
        PartPose neighbour = pose;
        neighbour.shift += QPointF(random.uniform(-40, 40), random.uniform(370, 420));
        Label other(seed + 100 + 3 * (belt % 7));
        lay(picture, other.drawing, neighbour);
    }
    lay(picture, drawing, pose);
    if (disturbance.glare) {
        addGlare(picture, patchRect, pose, random);
    }
    disturb(picture, disturbance, random);
    return picture;
}

cv::Mat Label::taughtPicture(std::uint64_t belt) const
{
    PartPose pose;
    pose.pivot = pivot();
    return picture(pose, belt, {});
}

cv::Mat Label::coveredPicture(const PartPose& pose, std::uint64_t belt, const Disturbance& disturbance) const
{
    cv::RNG random(belt * 999983 + seed);
    Label covered(*this);
    covered.drawing = drawing.clone();
    const QRect inDrawing(
        patchRect.x() - labelRect.x, patchRect.y() - labelRect.y, patchRect.width(), patchRect.height());
    const cv::Rect cover(inDrawing.x() * fine - 8, inDrawing.y() * fine - 8, inDrawing.width() * fine + 16,
        inDrawing.height() * fine + 16);
    cv::rectangle(covered.drawing, cover, grey(random, 20, 230), cv::FILLED);
    if (random.uniform(0, 2) == 1) {
        cv::putText(covered.drawing, randomWord(random, 5), {cover.x + 10, cover.y + 120}, cv::FONT_HERSHEY_SIMPLEX,
            2.2, grey(random, 20, 230), 6, cv::LINE_AA);
    }
    return covered.picture(pose, belt, disturbance);
}

cv::Mat belt(std::uint64_t seed)
{
    cv::RNG random(seed * 2654435761 + 1);
    cv::Mat coarse(pictureSize / 32, CV_8UC3);
    const int base = random.uniform(40, 150);
    random.fill(coarse, cv::RNG::UNIFORM, base - 25, base + 25);
    cv::Mat picture;
    cv::resize(coarse, picture, pictureSize, 0, 0, cv::INTER_CUBIC);
    cv::Mat weave(pictureSize, CV_8UC3);
    random.fill(weave, cv::RNG::UNIFORM, 0, 30);
    cv::blur(weave, weave, {3, random.uniform(0, 2) == 1 ? 9 : 3});
    picture += weave;
    if (random.uniform(0, 3) == 0) {
        const int pitch = random.uniform(30, 120);
        for (int y = random.uniform(0, pitch); y < picture.rows; y += pitch) {
            cv::line(picture, {0, y}, {picture.cols, y + random.uniform(-10, 10)}, cv::Scalar::all(base / 2), 3);
        }
    }
    for (int i = random.uniform(0, 6); i > 0; --i) {
        cv::ellipse(picture, {random.uniform(0, picture.cols), random.uniform(0, picture.rows)},
            {random.uniform(5, 60), random.uniform(5, 60)}, random.uniform(0, 180), 0, 360, grey(random, 20, 200),
            cv::FILLED, cv::LINE_AA);
    }
    return picture;
}

cv::Mat otherParts(std::uint64_t seed, const Disturbance& disturbance)
{
    cv::RNG random(seed * 179424673 + 7);
    cv::Mat picture = belt(seed);
    const int kind = random.uniform(0, 3);
    const cv::Point middle(random.uniform(500, 780), random.uniform(400, 620));
    if (kind == 0) {
        for (int radius = random.uniform(150, 260); radius > 10; radius -= random.uniform(10, 50)) {
            cv::circle(picture, middle, radius, grey(random, 20, 230), cv::FILLED, cv::LINE_AA);
        }
    } else if (kind == 1) {
        cv::rectangle(picture, cv::Rect(middle.x - 260, middle.y - 200, 520, 400), grey(random, 30, 120), cv::FILLED);
        for (int i = random.uniform(20, 60); i > 0; --i) {
            cv::rectangle(picture,
                cv::Rect(middle.x + random.uniform(-250, 200), middle.y + random.uniform(-190, 150),
                    random.uniform(8, 60), random.uniform(8, 60)),
                grey(random, 20, 230), cv::FILLED);
        }
    } else {
        cv::rectangle(picture, cv::Rect(middle.x - 260, middle.y - 200, 520, 400), grey(random, 150, 230), cv::FILLED);
        for (int y = middle.y - 170; y < middle.y + 180; y += random.uniform(25, 70)) {
            cv::putText(picture, randomWord(random, random.uniform(4, 14)), {middle.x - 240, y},
                random.uniform(0, 2) == 1 ? cv::FONT_HERSHEY_DUPLEX : cv::FONT_HERSHEY_SIMPLEX,
                random.uniform(0.6, 1.6), grey(random, 10, 90), random.uniform(1, 4), cv::LINE_AA);
        }
    }
    disturb(picture, disturbance, random);
    return picture;
}

PartPose randomPose(cv::RNG& random, QPointF pivot, double shift, double turn)
{
    PartPose pose;
    pose.pivot = pivot;
    pose.shift = QPointF(random.uniform(-shift, shift), random.uniform(-shift, shift));
    pose.turn = random.uniform(-turn, turn);
    return pose;
}

Disturbance randomDisturbance(cv::RNG& random)
{
    Disturbance disturbance;
    disturbance.gain = random.uniform(0.7, 1.3);
    disturbance.offset = random.uniform(-0.3, 0.3) * 128;
    disturbance.noise = random.uniform(0.0, 8.0);
    disturbance.blur = random.uniform(0.0, 1.5);
    disturbance.glare = random.uniform(0, 4) == 0;
    return disturbance;
}

std::array<double, 4> cornerErrors(const PartPose& found, const PartPose& truth, const QRectF& region)
{
    const auto a = foundCorners(found, region);
    const auto b = foundCorners(truth, region);
    std::array<double, 4> errors{};
    for (std::size_t i = 0; i < errors.size(); ++i) {
        errors[i] = std::hypot(a[i].x() - b[i].x(), a[i].y() - b[i].y());
    }
    return errors;
}

} // namespace scenes
