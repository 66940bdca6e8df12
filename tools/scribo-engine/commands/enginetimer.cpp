#include "enginetimer.h"

#include "enginerunner.h"

#include "plan/planbuilder.h"
#include "plan/singlethread.h"

#include <algorithm>
#include <chrono>

namespace scribo::tool {

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

cpu::ThreadChoice::Duration asDuration(double milliseconds)
{
    return std::chrono::duration_cast<cpu::ThreadChoice::Duration>(
        std::chrono::duration<double, std::milli>(milliseconds));
}

/// Of an even number of values the upper one in the middle. Changes the order of `values`.
double median(std::vector<double>& values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

bool EngineTimer::load(const void* bytes, std::size_t size, QString* error)
{
    const Clock::time_point start = Clock::now();
    std::string reason;
    model = cpu::Model::load(bytes, size, &reason);
    loading = millisecondsSince(start);
    *error = QString::fromStdString(reason);
    return model != nullptr;
}

bool EngineTimer::time(int width, int runs, WidthTimes* times, QString* error)
{
    const cpu::SingleThread single;
    dnnl::stream stream(model->engine());
    const Clock::time_point start = Clock::now();
    std::string reason;
    plan = cpu::makePlan(*model, width, &reason);
    if (!plan) {
        *error = QString::fromStdString(reason);
        return false;
    }
    bind();
    plan->run(stream, cpu::Crew());
    times->first = millisecondsSince(start);

    std::vector<double> alone;
    std::vector<double> helped;
    for (int run = 0; run < std::max(runs, 1); ++run) {
        timeRun(false, stream, &alone, &helped);
        timeRun(true, stream, &alone, &helped);
    }
    times->best = *std::min_element(alone.begin(), alone.end());
    times->median = median(alone);
    if (!helped.empty()) {
        times->helped = median(helped);
        times->threads = cpu::ThreadChoice::isWorthwhile(asDuration(times->helped), asDuration(times->median)) ? 2 : 1;
    }
    times->planBytes = plan->heldSize() + plan->arenaSize();
    return true;
}

/// A run, with the helper if that is wanted and to be had; its milliseconds go where they belong.
void EngineTimer::timeRun(
    bool wantsHelper, dnnl::stream& stream, std::vector<double>* alone, std::vector<double>* withHelper)
{
    const cpu::Helper::Run presence(*helper);
    const Clock::time_point begin = Clock::now();
    bool isHelped = false;
    {
        const cpu::Crew crew = wantsHelper ? cpu::Crew(presence) : cpu::Crew();
        isHelped = crew.isHelped();
        plan->run(stream, crew);
    }
    (isHelped ? withHelper : alone)->push_back(millisecondsSince(begin));
}

void EngineTimer::bind()
{
    arena = std::make_unique<cpu::AlignedBuffer>(plan->arenaSize());
    bindings.clear();
    std::vector<void*> addresses;
    for (const cpu::Shape& shape : plan->bindingShapes()) {
        bindings.push_back(testPicture(static_cast<std::size_t>(cpu::countElements(shape))));
        addresses.push_back(bindings.back().data());
    }
    plan->bind(arena->data(), addresses.data());
}

std::vector<double> EngineTimer::profile(int runs)
{
    const cpu::SingleThread single;
    dnnl::stream stream(model->engine());
    std::vector<std::vector<double>> spent;
    for (int run = 0; run < runs; ++run) {
        const std::vector<double> parts = plan->profile(stream);
        spent.resize(std::max(spent.size(), parts.size()));
        for (std::size_t part = 0; part < parts.size(); ++part) {
            spent[part].push_back(parts[part] / 1000);
        }
    }
    std::vector<double> medians;
    for (std::vector<double>& part : spent) {
        medians.push_back(median(part));
    }
    return medians;
}

} // namespace scribo::tool
