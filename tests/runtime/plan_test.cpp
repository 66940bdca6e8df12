#include "operationcase.h"

#include "operations/planner.h"
#include "plan/plancache.h"

namespace scribo::test {
namespace {

using cpu::Buffer;
using cpu::Model;
using cpu::Plan;
using cpu::PlanCache;

std::shared_ptr<Model> modelOf(const std::vector<std::uint8_t>& bytes)
{
    const Result<std::shared_ptr<Model>> model = Model::load(bytes.data(), bytes.size());
    EXPECT_TRUE(model) << model.error().message;
    return model.value_or(nullptr);
}

std::shared_ptr<Model> crnnModel()
{
    return modelOf(smallCrnn(format::CellKind::Lstm, 7, 1).bytes(8, 96));
}

std::unique_ptr<Plan> planOf(Model& model, int width)
{
    Result<std::unique_ptr<Plan>> plan = cpu::makePlan(model, width);
    EXPECT_TRUE(plan) << plan.error().message;
    return plan ? std::move(*plan) : nullptr;
}

TEST(PlanCache, DropsWhatWasNotUsedForLongest)
{
    const std::shared_ptr<Model> model = crnnModel();
    const std::size_t one = planOf(*model, 40)->heldSize();
    ASSERT_GT(one, 0U);
    PlanCache cache(3 * one);
    for (const int width : {40, 41, 42}) {
        EXPECT_EQ(cache.insert(planOf(*model, width))->width(), width);
    }
    EXPECT_EQ(cache.count(), 3U);
    EXPECT_EQ(cache.size(), 3 * one);
    EXPECT_NE(cache.find(40), nullptr);
    cache.insert(planOf(*model, 43));
    EXPECT_EQ(cache.count(), 3U);
    EXPECT_EQ(cache.find(41), nullptr);
    EXPECT_NE(cache.find(42), nullptr);
    ASSERT_NE(cache.find(40), nullptr);
    EXPECT_EQ(cache.find(40)->width(), 40);
}

TEST(PlanCache, KeepsOnePlanHoweverLarge)
{
    const std::shared_ptr<Model> model = crnnModel();
    PlanCache cache(1);
    for (const int width : {40, 41, 42}) {
        EXPECT_EQ(cache.insert(planOf(*model, width))->width(), width);
        EXPECT_EQ(cache.count(), 1U);
    }
}

TEST(WeightStore, SharesWeightsBetweenPlans)
{
    const std::shared_ptr<Model> model = crnnModel();
    planOf(*model, 40);
    const std::size_t size = model->weights().size();
    EXPECT_GT(size, 0U);
    planOf(*model, 40);
    planOf(*model, 44);
    EXPECT_EQ(model->weights().size(), size);
}

TEST(Plan, TakesTilesForConvolutionsOfThreeByThree)
{
    constexpr std::int64_t channels = 32;
    NetworkMaker maker;
    const int picture = maker.input(1, channels, 16);
    format::ConvolutionT convolution;
    convolution.strides = {1, 1};
    convolution.dilations = {1, 1};
    convolution.pads = {1, 1, 1, 1};
    const std::vector<float> ones(channels * channels * 9, 1.0F);
    maker.output(maker.add(convolution, {picture, maker.floats({channels, channels, 3, 3}, ones)}), "output");
    const std::vector<std::uint8_t> bytes = maker.bytes(8, 96);
    const std::shared_ptr<Model> model = modelOf(bytes);
    ASSERT_NE(model, nullptr);
    planOf(*model, 32);
    // Six by six weights of a filter in the place of three by three.
    EXPECT_GE(model->weights().size(), sizeof(float) * channels * channels * 36);
}

TEST(Plan, LeavesZeroStatesAndUnreadResultsOut)
{
    NetworkMaker maker;
    const int picture = maker.input(1, 1, 4);
    // Read by nobody.
    maker.add(format::SoftmaxT(), {maker.add(format::BinaryT(), {picture, picture})});
    maker.output(maker.add(format::UnaryT(), {maker.add(format::ActivationT(), {picture})}), "output");
    const std::vector<std::uint8_t> bytes = maker.bytes(1, 96);
    const std::shared_ptr<Model> model = modelOf(bytes);
    ASSERT_NE(model, nullptr);
    const std::unique_ptr<Plan> plan = planOf(*model, 10);
    // From the input's buffer straight into the output's.
    EXPECT_EQ(plan->arenaSize(), 0U);
    EXPECT_EQ(plan->fixedSize(), 0U);
}

TEST(Arena, BuffersInUseAtTheSameTimeDoNotOverlap)
{
    repeatRandomly(50, [](std::mt19937& random) {
        std::vector<Buffer> buffers(static_cast<std::size_t>(pick(random, 1, 60)));
        std::size_t sum = 0;
        for (Buffer& buffer : buffers) {
            buffer.size = static_cast<std::size_t>(pick(random, 0, 1000));
            buffer.firstStep = static_cast<int>(pick(random, 0, 30));
            buffer.lastStep = buffer.firstStep + static_cast<int>(pick(random, 0, 5));
            sum += cpu::AlignedBuffer::rounded(buffer.size);
        }
        buffers[0].firstStep = -1;
        const std::size_t total = cpu::arrangeArena(&buffers);
        EXPECT_LE(total, sum);
        for (std::size_t i = 1; i < buffers.size(); ++i) {
            const Buffer& a = buffers[i];
            EXPECT_EQ(a.offset % 64, 0U);
            EXPECT_LE(a.offset + a.size, total);
            for (std::size_t j = 1; j < i; ++j) {
                const Buffer& b = buffers[j];
                const bool together = a.firstStep <= b.lastStep && b.firstStep <= a.lastStep;
                EXPECT_TRUE(!together || a.offset + a.size <= b.offset || b.offset + b.size <= a.offset);
            }
        }
    });
}

TEST(Arena, UsesRoomAgain)
{
    std::vector<Buffer> buffers(3);
    for (int i = 0; i < 3; ++i) {
        buffers[static_cast<std::size_t>(i)].size = 6400;
        buffers[static_cast<std::size_t>(i)].firstStep = i;
        buffers[static_cast<std::size_t>(i)].lastStep = i + 1;
    }
    EXPECT_EQ(cpu::arrangeArena(&buffers), 12800U);
}

} // namespace
} // namespace scribo::test
