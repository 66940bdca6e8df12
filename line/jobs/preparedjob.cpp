#include "jobs/preparedjob.h"

#include "modelconfig.h"
#include "modelfilename.h"
#include "parameternumbers.h"
#include "parameters.h"
#include "rules/textcomparison.h"
#include "settings.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonArray>

#include <algorithm>
#include <cmath>

namespace scribo::line {

namespace {

const QString valuesKey = QStringLiteral("values");

void setNg(Reason reason, const QString& text, RegionReading* reading)
{
    reading->isOk = false;
    reading->reason = reason;
    reading->reasonText = text;
}

/// With its model switched off the plug-in says OK without reading.
bool isSwitchedOff(ProcessorInterface& processor)
{
    const QJsonArray choices = host::parameterState(processor, host::ParameterNumber::enable)[valuesKey].toArray();
    return !choices.at(0).toBool();
}

Result<QString> fileHash(const QString& path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file)) {
        return failure(QStringLiteral("%1: %2").arg(path, file.errorString()).toStdString());
    }
    return QString::fromLatin1(hash.result().toHex());
}

QString countFault(int count, const host::CountRange& range)
{
    return range.low == range.high
        ? QStringLiteral("%1 characters, expected %2").arg(count).arg(range.low)
        : QStringLiteral("%1 characters, expected %2 to %3").arg(count).arg(range.low).arg(range.high);
}

/// A picture that holds all regions, black.
cv::Mat blackPicture(const QList<JobRegion>& regions)
{
    double width = 1;
    double height = 1;
    for (const JobRegion& region : regions) {
        width = std::max(width, region.rect.right());
        height = std::max(height, region.rect.bottom());
    }
    constexpr double most = 20000; // pixels of the largest cameras
    return cv::Mat::zeros(static_cast<int>(std::ceil(std::min(height, most))),
        static_cast<int>(std::ceil(std::min(width, most))), CV_8UC1);
}

} // namespace

Result<std::shared_ptr<PreparedJob>> PreparedJob::prepare(
    const Job& job, const host::ProcessorPlugin& plugin, const host::ArchivePlace& archive)
{
    std::shared_ptr<PreparedJob> prepared(new PreparedJob(job, archive));
    if (const Result<void> loaded = prepared->load(plugin); !loaded) {
        return failure(QStringLiteral("job %1: ").arg(job.name).toStdString() + loaded.error().message);
    }
    return prepared;
}

PreparedJob::PreparedJob(const Job& job, const host::ArchivePlace& archive)
    : job(job)
    , archive(archive)
    , who{job.name, job.number, job.hash, {}}
{
}

Result<void> PreparedJob::load(const host::ProcessorPlugin& plugin)
{
    for (const JobRegion& region : job.regions) {
        if (region.expected.isEmpty()) {
            expectedTexts.emplace_back();
            continue;
        }
        Result<ExpectedText> expected = ExpectedText::create(region.expected, job.text);
        if (!expected) {
            return tl::unexpected(expected.error());
        }
        expectedTexts.emplace_back(std::move(*expected));
    }
    if (job.alignment) {
        Result<PartFinder> restored = PartFinder::restore(job.alignment->patch, job.alignment->settings);
        if (!restored) {
            return tl::unexpected(restored.error());
        }
        finder = std::move(*restored);
    }
    if (Result<void> read = readModel(); !read) {
        return read;
    }
    for (auto [inspector, comparison] :
        {std::pair(&comparing, host::Comparison::fixed), std::pair(&reading, host::Comparison::off)}) {
        auto made = makeInspector(plugin, comparison);
        if (!made) {
            return tl::unexpected(made.error());
        }
        *inspector = std::move(*made);
    }
    return warmUp();
}

/// What the model's package says: its hash, its look-alikes and the characters that it ignores.
Result<void> PreparedJob::readModel()
{
    const QString path = QDir(QStringLiteral("model")).filePath(job.model);
    Result<QString> hash = fileHash(path);
    if (!hash) {
        return tl::unexpected(hash.error());
    }
    who.modelHash = *hash;
    const auto name = splitModelFileName(path);
    if (!name) {
        return failure(QStringLiteral("%1 is no name of an engine file").arg(job.model).toStdString());
    }
    ModelConfig config;
    if (Result<void> read = readModelConfig(name->configPath, &config); !read) {
        return read;
    }
    for (const ClassInfo& one : config.classes) {
        characters.groups.append(QString::fromStdString(one.name));
    }
    characters.ignored = config.ignoreChar;
    return {};
}

Result<std::unique_ptr<host::Inspector>> PreparedJob::makeInspector(
    const host::ProcessorPlugin& plugin, host::Comparison comparison) const
{
    auto made = host::Inspector::make(plugin);
    if (!made) {
        return made;
    }
    ProcessorInterface& processor = (*made)->processor();
    Result<void> done;
    if (!job.settings.isEmpty()) {
        done = host::applySettings(job.settings, processor);
    }
    if (done && isSwitchedOff(processor)) {
        done = failure("the plug-in's settings switch the model off: nothing would be read");
    }
    if (done) {
        done = host::setParameter(processor, host::ParameterNumber::model, job.model);
    }
    if (done) {
        done = host::setParameter(
            processor, host::ParameterNumber::compare, QString::number(static_cast<int>(comparison) + 1));
    }
    if (!done) {
        return tl::unexpected(done.error());
    }
    host::activateSettings(processor);
    return made;
}

/// Shows whether the model can be loaded, and lets no item wait for it.
Result<void> PreparedJob::warmUp()
{
    const cv::Mat picture = blackPicture(job.regions);
    QList<host::TaughtRegion> regions;
    for (const JobRegion& region : job.regions) {
        regions.append({region.rect, QStringLiteral("?"), std::nullopt});
    }
    for (host::Inspector* const inspector : {comparing.get(), reading.get()}) {
        for (const host::RegionResult& result : inspector->inspect(picture, regions).regions) {
            if (const QString message = host::unreadMessage(result).trimmed(); !message.isEmpty()) {
                return failure(QStringLiteral("%1: %2").arg(job.model, message).toStdString());
            }
        }
        inspector->setArchive(archive); // of real pictures
    }
    return {};
}

Judgement PreparedJob::judge(const Frame& frame, const ItemContext& context)
{
    Judgement judgement;
    cv::Mat picture = frame.picture;
    std::optional<PartPose> pose;
    if (finder) {
        const auto found = finder->find(picture);
        if (!found) {
            judgement.reason = Reason::partNotFound;
            judgement.reasonText = found.error().message;
            return judgement;
        }
        pose = *found;
        picture = alignedPicture(picture, *pose);
    }
    std::vector<Item> items = begin(context);
    markOutside(pose ? &*pose : nullptr, picture, items);
    chooseTexts(picture, items);
    double milliseconds = inspect(picture, items, true);
    milliseconds += inspect(picture, items, false);
    judgement = judgementOf(items);
    judgement.processMilliseconds = milliseconds;
    judgement.picture = std::make_shared<const cv::Mat>(picture);
    return judgement;
}

std::vector<PreparedJob::Item> PreparedJob::begin(const ItemContext& context) const
{
    TextContext text;
    text.now = context.at;
    text.lot = context.lot;
    text.counter = context.counter ? std::optional<qint64>(*context.counter) : std::nullopt;
    std::vector<Item> items;
    for (int i = 0; i < job.regions.size(); ++i) {
        Item item;
        item.reading.region = i;
        item.reading.name = job.regions[i].name;
        item.reading.rect = job.regions[i].rect;
        item.reading.isOk = true;
        if (const auto& expected = expectedTexts[static_cast<std::size_t>(i)]) {
            Result<Expectation> now = expected->at(text);
            if (now) {
                item.reading.expected = now->text();
                item.expected = std::move(*now);
            } else {
                item.reading.expected = expected->source();
                setNg(Reason::ruleNotMet, QString::fromStdString(now.error().message), &item.reading);
            }
        }
        items.push_back(std::move(item));
    }
    return items;
}

/// A region that the camera did not see whole is NG, whatever can be read in the rest of it.
void PreparedJob::markOutside(const PartPose* pose, const cv::Mat& picture, std::vector<Item>& items)
{
    for (Item& item : items) {
        const QRectF& rect = item.reading.rect;
        const bool isInside = pose != nullptr ? isInPicture(*pose, rect, picture.size())
                                              : QRectF(0, 0, picture.cols, picture.rows).intersects(rect);
        if (!isInside) {
            setNg(Reason::regionOutside, QStringLiteral("the region is not in the picture"), &item.reading);
        }
    }
}

/// Which text the plug-in compares with. Where a grace window accepts several, the one that the reading is nearest to:
/// it is read once without comparison for that, and without a place in the archive.
void PreparedJob::chooseTexts(const cv::Mat& picture, std::vector<Item>& items)
{
    for (Item& item : items) {
        if (!item.expected || item.expected->hasMatch() || !item.reading.isOk) {
            continue;
        }
        item.fixedText = item.expected->text();
        if (item.expected->texts().size() > 1) {
            reading->setArchive({});
            const auto probe = reading->inspect(picture, {{item.reading.rect, std::nullopt, std::nullopt}});
            reading->setArchive(archive);
            const QString text = probe.regions.isEmpty() ? QString() : probe.regions.first().text;
            item.fixedText = compareText(text, *item.expected, characters).expected;
            item.reading.expected = item.fixedText;
        }
    }
}

/// Reads the regions that the plug-in compares, or the others. Returns the milliseconds that the plug-in took.
double PreparedJob::inspect(const cv::Mat& picture, std::vector<Item>& items, bool areFixed)
{
    QList<host::TaughtRegion> regions;
    std::vector<Item*> wanted;
    for (Item& item : items) {
        if (item.fixedText.isEmpty() == areFixed || item.reading.reason == Reason::regionOutside) {
            continue;
        }
        host::TaughtRegion region{item.reading.rect, std::nullopt, std::nullopt};
        if (areFixed) {
            region.reference = characters.kept(item.fixedText); // the plug-in drops the others from the reading only
            region.count = job.regions[item.reading.region].count;
        }
        regions.append(region);
        wanted.push_back(&item);
    }
    if (regions.isEmpty()) {
        return 0;
    }
    const host::InspectionResult result = (areFixed ? comparing : reading)->inspect(picture, regions);
    for (int i = 0; i < result.regions.size(); ++i) {
        take(result.regions[i], wanted[static_cast<std::size_t>(i)]);
    }
    return result.milliseconds;
}

void PreparedJob::take(const host::RegionResult& result, Item* item) const
{
    item->reading.text = result.text;
    item->reading.milliseconds = result.milliseconds;
    item->count = result.count;
    const QString message = host::unreadMessage(result).trimmed();
    if (!message.isEmpty()) {
        setNg(Reason::unreadable, message, &item->reading);
    } else if (!item->fixedText.isEmpty()) {
        judgeFixed(result.isOk, item);
    } else if (!result.isOk) {
        setNg(Reason::internalFault, QStringLiteral("the plug-in says NG without a reason"), &item->reading);
    } else if (item->reading.isOk) {
        judgeOther(item);
    }
}

/// The verdict is the plug-in's; what differs is worked out for people.
void PreparedJob::judgeFixed(bool isOk, Item* item) const
{
    if (isOk) {
        return;
    }
    const auto& range = job.regions[item->reading.region].count;
    const TextComparison comparison = compareText(item->reading.text, *item->expected, characters);
    if (!comparison.isOk()) {
        setNg(Reason::textDiffers, comparison.reason, &item->reading);
    } else if (range && (item->count < range->low || item->count > range->high)) {
        setNg(Reason::characterCount, countFault(item->count, *range), &item->reading);
    } else {
        setNg(Reason::textDiffers, QStringLiteral("the plug-in's comparison says NG"), &item->reading);
    }
}

void PreparedJob::judgeOther(Item* item) const
{
    if (item->expected) {
        const TextComparison comparison = compareText(item->reading.text, *item->expected, characters);
        if (!comparison.isOk()) {
            setNg(Reason::ruleNotMet, comparison.reason, &item->reading);
            return;
        }
    }
    const auto& range = job.regions[item->reading.region].count;
    if (range) {
        const int count = characters.kept(item->reading.text).size();
        if (count < range->low || count > range->high) {
            setNg(Reason::characterCount, countFault(count, *range), &item->reading);
        }
    }
}

Judgement PreparedJob::judgementOf(const std::vector<Item>& items)
{
    Judgement judgement;
    judgement.isOk = true;
    judgement.reason = Reason::none;
    for (const Item& item : items) {
        if (!item.reading.isOk && judgement.isOk) {
            judgement.isOk = false;
            judgement.reason = item.reading.reason;
            judgement.reasonText = QStringLiteral("%1: %2").arg(item.reading.name, item.reading.reasonText);
        }
        judgement.readings.append(item.reading);
    }
    return judgement;
}

} // namespace scribo::line
