#include "enginetimer.h"

#include "operations/planner.h"
#include "plan/singlethread.h"

#include <algorithm>
#include <chrono>

namespace scribo::cpu {

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

ThreadChoice::Duration asDuration(double milliseconds)
{
    return std::chrono::duration_cast<ThreadChoice::Duration>(std::chrono::duration<double, std::milli>(milliseconds));
}

/// Of an even number of values the upper one in the middle. Changes the order of `values`.
double median(std::vector<double>& values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Milliseconds of runs, by who carried them out.
struct RunTimes
{
    std::vector<double> alone;
    std::vector<double> helped;
};

} // namespace

struct EngineTimer::State
{
    Picture picture;
    double loading = 0;
    std::shared_ptr<Model> model;
    std::shared_ptr<Helper> helper = Helper::ofProcess();
    std::unique_ptr<Plan> plan;
    std::unique_ptr<AlignedBuffer> arena;
    std::vector<std::vector<float>> bindings;

    void bind()
    {
        arena = std::make_unique<AlignedBuffer>(plan->arenaSize());
        bindings.clear();
        std::vector<void*> addresses;
        for (const Shape& shape : plan->bindingShapes()) {
            bindings.push_back(picture(static_cast<std::size_t>(countElements(shape))));
            addresses.push_back(bindings.back().data());
        }
        plan->bind(arena->data(), addresses.data());
    }

    /// A run, with the helper if that is wanted and to be had; its milliseconds go where they belong.
    void timeRun(bool wantsHelper, dnnl::stream& stream, RunTimes* times)
    {
        const Helper::Run presence(*helper);
        const Clock::time_point begin = Clock::now();
        bool isHelped = false;
        {
            const Crew crew = wantsHelper ? Crew(presence) : Crew();
            isHelped = crew.isHelped();
            plan->run(stream, crew);
        }
        (isHelped ? times->helped : times->alone).push_back(millisecondsSince(begin));
    }
};

EngineTimer::EngineTimer(Picture picture)
    : state(std::make_unique<State>())
{
    state->picture = std::move(picture);
}

EngineTimer::~EngineTimer() = default;

Result<void> EngineTimer::load(const void* bytes, std::size_t size)
{
    const Clock::time_point start = Clock::now();
    return Model::load(bytes, size).map([&](std::shared_ptr<Model> model) {
        state->model = std::move(model);
        state->loading = millisecondsSince(start);
    });
}

double EngineTimer::loadTime() const
{
    return state->loading;
}

std::size_t EngineTimer::weightBytes() const
{
    return state->model->weights().size();
}

Result<WidthTimes> EngineTimer::time(int width, int runs)
{
    const SingleThread single;
    dnnl::stream stream(state->model->engine());
    const Clock::time_point start = Clock::now();
    Result<std::unique_ptr<Plan>> plan = makePlan(*state->model, width);
    if (!plan) {
        return tl::unexpected(plan.error());
    }
    state->plan = std::move(*plan);
    state->bind();
    state->plan->run(stream, Crew());
    WidthTimes times;
    times.first = millisecondsSince(start);

    RunTimes spent;
    for (int run = 0; run < std::max(runs, 1); ++run) {
        state->timeRun(false, stream, &spent);
        state->timeRun(true, stream, &spent);
    }
    times.best = *std::min_element(spent.alone.begin(), spent.alone.end());
    times.median = median(spent.alone);
    if (!spent.helped.empty()) {
        times.helped = median(spent.helped);
        times.threads = ThreadChoice::isWorthwhile(asDuration(times.helped), asDuration(times.median)) ? 2 : 1;
    }
    times.planBytes = state->plan->heldSize() + state->plan->arenaSize();
    return times;
}

std::vector<double> EngineTimer::profile(int runs)
{
    const SingleThread single;
    dnnl::stream stream(state->model->engine());
    std::vector<std::vector<double>> spent;
    for (int run = 0; run < runs; ++run) {
        const std::vector<double> parts = state->plan->profile(stream);
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

} // namespace scribo::cpu
