#pragma once

#include "align/partfinder.h"
#include "engine/itemjudge.h"
#include "inspector.h"
#include "jobs/job.h"
#include "result.h"
#include "rules/characterrules.h"
#include "rules/expectedtext.h"

#include <memory>
#include <optional>
#include <vector>

namespace scribo::line {

/// A job that is ready for its items: the model is loaded and has run once, the patch is taught, the templates parsed.
///
/// Fixed texts are judged by the plug-in's own comparison. Parts that vary are judged by the engine on the reading, as
/// are counts where nothing fixed is expected.
class PreparedJob : public ItemJudge
{
public:
    /// Loads what the job needs. Models lie in the folder "model" of the working directory, as the plug-in wants them.
    /// Fails with one sentence.
    static Result<std::shared_ptr<PreparedJob>> prepare(
        const Job& job, const host::ProcessorPlugin& plugin, const host::ArchivePlace& archive);

    const JobIdentity& identity() const override { return who; }
    const QJsonObject& sourceSettings() const override { return job.source; }
    Judgement judge(const Frame& frame, const ItemContext& context) override;

private:
    /// A region while an item is judged.
    struct Item
    {
        RegionReading reading;
        std::optional<Expectation> expected;
        QString fixedText; ///< what the plug-in compares with; empty: it does not compare
        int count = -1; ///< characters read; -1: none were
    };

    explicit PreparedJob(const Job& job, const host::ArchivePlace& archive);
    Result<void> load(const host::ProcessorPlugin& plugin);
    Result<std::unique_ptr<host::Inspector>> makeInspector(
        const host::ProcessorPlugin& plugin, host::Comparison comparison) const;
    Result<void> readModel();
    Result<void> warmUp();
    std::vector<Item> begin(const ItemContext& context) const;
    void chooseTexts(const cv::Mat& picture, std::vector<Item>& items);
    double inspect(const cv::Mat& picture, std::vector<Item>& items, bool areFixed);
    void take(const host::RegionResult& result, Item* item) const;
    void judgeFixed(bool isOk, Item* item) const;
    void judgeOther(Item* item) const;
    static void markOutside(const PartPose* pose, const cv::Mat& picture, std::vector<Item>& items);
    static Judgement judgementOf(const std::vector<Item>& items);

    const Job job;
    const host::ArchivePlace archive;
    JobIdentity who;
    std::vector<std::optional<ExpectedText>> expectedTexts; ///< one for each region
    CharacterRules characters; ///< of the model
    std::optional<PartFinder> finder;
    std::unique_ptr<host::Inspector> comparing; ///< with fixed comparison
    std::unique_ptr<host::Inspector> reading; ///< without comparison
};

} // namespace scribo::line
