#include "operationtable.h"

namespace scribo::cpu {

namespace {

/// What is left when `element` joins numbers that are all `common`.
std::optional<float> join(const std::optional<float>& common, const std::optional<float>& element)
{
    return common && element && *common == *element ? common : std::nullopt;
}

Result<void> moveIntegers(Rule& rule, const Movement& movement)
{
    if (movement.filler) {
        return failure("it cannot pad integers");
    }
    for (std::size_t output = 0; output < movement.results.size(); ++output) {
        const std::int64_t count = countElements(movement.results[output]);
        if (count < 0 || count > maximumIntegers) {
            return failure("its result of " + toString(movement.results[output]) + " is too large");
        }
        std::vector<std::int64_t> integers(static_cast<std::size_t>(count));
        for (const Movement::Part& part : movement.parts) {
            if (part.output == output) {
                copyStrided(part.copy, rule.operand(part.input).integers.data(), integers.data());
            }
        }
        if (Result<void> done = rule.setIntegers(output, movement.results[output], std::move(integers)); !done) {
            return done;
        }
    }
    return {};
}

Result<void> moveFloats(Rule& rule, const Movement& movement)
{
    std::optional<float> uniform = movement.filler ? movement.filler : rule.operand(0).uniform;
    for (const Movement::Part& part : movement.parts) {
        uniform = join(uniform, rule.operand(part.input).uniform);
    }
    for (std::size_t output = 0; output < movement.results.size(); ++output) {
        if (Result<void> done = rule.setFloats(output, movement.results[output], uniform); !done) {
            return done;
        }
    }
    return {};
}

} // namespace

Result<void> inferMovement(Rule& rule)
{
    const Result<Movement> movement = operationRow(rule.operation.kind_type()).movement(rule);
    if (!movement) {
        return tl::unexpected(movement.error());
    }
    return rule.operand(0).isInteger() ? moveIntegers(rule, *movement) : moveFloats(rule, *movement);
}

} // namespace scribo::cpu
