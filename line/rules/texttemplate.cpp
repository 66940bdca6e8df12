#include "rules/texttemplate.h"

#include "rules/localmoment.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace scribo::line {

namespace {

constexpr int longestLot = 128;
constexpr int secondMilliseconds = 1000;
constexpr int minuteSeconds = 60;

/// Clocks are a whole number of quarters of an hour from UTC, so that hours and days begin on these.
constexpr int quarterSeconds = 15 * minuteSeconds;

tl::unexpected<Error> noText(const QString& message)
{
    return failure(message.toStdString());
}

Result<QString> lotText(const TextContext& context)
{
    if (context.lot.isEmpty()) {
        return noText(QStringLiteral("no lot is set"));
    }
    if (context.lot.size() > longestLot) {
        return noText(QStringLiteral("the lot is longer than %1 characters").arg(longestLot));
    }
    return context.lot;
}

Result<QString> counterText(const CounterField& field, const TextContext& context)
{
    if (!context.counter) {
        return noText(QStringLiteral("no counter is set"));
    }
    if (*context.counter < 0) {
        return noText(QStringLiteral("the counter is %1, which is less than 0").arg(*context.counter));
    }
    const QString digits = QString::number(*context.counter);
    if (field.digits != 0 && digits.size() > field.digits) {
        return noText(QStringLiteral("the counter is %1, which has more than %2 digits").arg(digits).arg(field.digits));
    }
    return digits.rightJustified(field.digits, QLatin1Char('0'));
}

Result<QString> shiftText(const LocalMoment& moment, const TextSettings& settings)
{
    if (settings.shifts.isEmpty()) {
        return noText(QStringLiteral("there are no shifts"));
    }
    auto next = settings.shifts.upperBound(moment.shiftTime());
    if (next == settings.shifts.begin()) {
        next = settings.shifts.end(); // the last shift of a day goes on into the next
    }
    return std::prev(next).value();
}

/// Appends the parts of one element.
class Expander
{
public:
    Expander(const LocalMoment& moment, const TextContext& context, const TextSettings& settings)
        : moment(moment)
        , context(context)
        , settings(settings)
    {
    }

    Result<void> operator()(const QString& text) { return append(PartKind::text, text); }
    Result<void> operator()(const DateRule& rule) { return rule.expand(moment, settings, &expanded.parts); }
    Result<void> operator()(const LotField& /*field*/) { return append(PartKind::lot, lotText(context)); }
    Result<void> operator()(const CounterField& field)
    {
        return append(PartKind::counter, counterText(field, context));
    }
    Result<void> operator()(const ShiftField& /*field*/)
    {
        return append(PartKind::shift, shiftText(moment, settings));
    }
    Result<void> operator()(const MatchPattern& pattern)
    {
        expanded.parts.push_back({PartKind::match, pattern.pattern(), patterns++});
        return {};
    }

    /// What was appended; to be called last.
    AcceptedText take() { return std::move(expanded); }

private:
    Result<void> append(PartKind kind, const Result<QString>& text)
    {
        if (!text) {
            return tl::make_unexpected(text.error());
        }
        expanded.parts.push_back({kind, *text, -1});
        return {};
    }

    const LocalMoment& moment;
    const TextContext& context;
    const TextSettings& settings;
    AcceptedText expanded;
    int patterns = 0;
};

int printedLength(const AcceptedText& accepted)
{
    return std::accumulate(accepted.parts.begin(), accepted.parts.end(), 0,
        [](int sum, const TextPart& part) { return part.kind == PartKind::match ? sum : sum + part.text.size(); });
}

bool isSame(const AcceptedText& one, const AcceptedText& other)
{
    return std::equal(one.parts.begin(), one.parts.end(), other.parts.begin(), other.parts.end(),
        [](const TextPart& a, const TextPart& b) { return a.text == b.text; });
}

/// Appends a text unless it is there already.
void addNew(std::vector<AcceptedText>* texts, AcceptedText text)
{
    const bool isThere
        = std::any_of(texts->begin(), texts->end(), [&text](const AcceptedText& other) { return isSame(text, other); });
    if (!isThere) {
        texts->push_back(std::move(text));
    }
}

int secondsOf(const QTime& time)
{
    return time.msecsSinceStartOfDay() / secondMilliseconds;
}

/// The last multiple of `step` that is not after `value`.
qint64 onGrid(qint64 value, qint64 step)
{
    const qint64 rest = value % step;
    return rest < 0 ? value - rest - step : value - rest;
}

/// Seconds between the moments at which a date may change, all multiples of them.
int gridOf(const DateRule& rule)
{
    if (rule.shows(DateValue::second)) {
        return 1;
    }
    const int dayBegin = rule.dayBegin ? secondsOf(*rule.dayBegin) : 0;
    return std::gcd(rule.shows(DateValue::minute) ? minuteSeconds : quarterSeconds, dayBegin);
}

} // namespace

TextTemplate::TextTemplate(QString text, std::vector<TemplateElement> elements_)
    : text(std::move(text))
    , elements(std::move(elements_))
{
    for (const TemplateElement& element : elements) {
        if (const auto* pattern = std::get_if<MatchPattern>(&element)) {
            patterns.push_back(*pattern);
        }
    }
}

Result<TextTemplate> TextTemplate::parse(const QString& text)
{
    auto elements = parseTemplate(text);
    if (!elements) {
        return tl::make_unexpected(elements.error());
    }
    return TextTemplate(text, *std::move(elements));
}

bool TextTemplate::hasMatch() const
{
    return !patterns.empty();
}

bool TextTemplate::usesLot() const
{
    return std::any_of(elements.begin(), elements.end(),
        [](const TemplateElement& element) { return std::holds_alternative<LotField>(element); });
}

bool TextTemplate::usesCounter() const
{
    return std::any_of(elements.begin(), elements.end(),
        [](const TemplateElement& element) { return std::holds_alternative<CounterField>(element); });
}

bool TextTemplate::dependsOnTime() const
{
    return std::any_of(elements.begin(), elements.end(), [](const TemplateElement& element) {
        return std::holds_alternative<DateRule>(element) || std::holds_alternative<ShiftField>(element);
    });
}

QStringList TextTemplate::faults(const TextSettings& settings) const
{
    QStringList faults;
    for (const TemplateElement& element : elements) {
        if (const auto* rule = std::get_if<DateRule>(&element)) {
            faults += rule->faults(settings);
        }
        if (std::holds_alternative<ShiftField>(element) && settings.shifts.isEmpty()) {
            faults.append(QStringLiteral("there are no shifts"));
        }
    }
    faults.removeDuplicates();
    return faults;
}

Result<AcceptedText> TextTemplate::expandAt(
    qint64 moment, const TextContext& context, const TextSettings& settings) const
{
    const LocalMoment local(moment, settings.zone);
    Expander expander(local, context, settings);
    for (const TemplateElement& element : elements) {
        const Result<void> done = std::visit(expander, element);
        if (!done) {
            return tl::make_unexpected(done.error());
        }
    }
    AcceptedText expanded = expander.take();
    if (printedLength(expanded) > longestText) {
        return noText(QStringLiteral("the expected text is longer than %1 characters").arg(longestText));
    }
    return expanded;
}

/// All that the texts depend on changes at moments on a grid: hours, days and shifts begin on it, and clocks are set on
/// it. So one moment of each of its cells shows every text of the window.
int TextTemplate::gridSeconds(const TextSettings& settings) const
{
    int grid = std::gcd(quarterSeconds, secondsOf(settings.dayBegin));
    for (auto shift = settings.shifts.begin(); shift != settings.shifts.end(); ++shift) {
        grid = std::gcd(grid, secondsOf(shift.key()));
    }
    for (const TemplateElement& element : elements) {
        if (const auto* rule = std::get_if<DateRule>(&element)) {
            grid = std::gcd(grid, gridOf(*rule));
        }
    }
    return grid;
}

Result<std::vector<AcceptedText>> TextTemplate::expandWindow(
    const TextContext& context, const TextSettings& settings) const
{
    const qint64 now = context.now.toMSecsSinceEpoch();
    auto atNow = expandAt(now, context, settings);
    if (!atNow) {
        return tl::make_unexpected(atNow.error());
    }
    std::vector<AcceptedText> texts{*std::move(atNow)};
    if (settings.grace.count() <= 0 || !dependsOnTime()) {
        return texts;
    }
    const qint64 grace = qint64{secondMilliseconds} * std::min(settings.grace, TextSettings::longestGrace).count();
    const qint64 step = qint64{secondMilliseconds} * gridSeconds(settings);
    for (qint64 moment = onGrid(now + grace, step); moment > now - grace - step; moment -= step) {
        auto expanded = expandAt(std::max(moment, now - grace), context, settings);
        if (!expanded) {
            return tl::make_unexpected(expanded.error());
        }
        addNew(&texts, *std::move(expanded));
        if (static_cast<int>(texts.size()) > mostTexts) {
            return noText(
                QStringLiteral("the grace window makes more than %1 texts right; make it shorter, or let a match part "
                               "stand for the time")
                    .arg(mostTexts));
        }
    }
    return texts;
}

Result<Expectation> TextTemplate::expand(const TextContext& context, const TextSettings& settings) const
{
    if (!context.now.isValid()) {
        return noText(QStringLiteral("the time is not valid"));
    }
    if (!settings.zone.isValid()) {
        return noText(QStringLiteral("the time zone is not valid"));
    }
    auto texts = expandWindow(context, settings);
    if (!texts) {
        return tl::make_unexpected(texts.error());
    }
    return Expectation(*std::move(texts), patterns);
}

} // namespace scribo::line
