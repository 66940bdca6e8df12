// What is compiled into a host: the order of the virtual tables and of the fields that it edits. Everything in this
// repository is built from the same headers, so no other test would notice a change.

#include "processorinterface.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

// The pointers to member functions are read as the Itanium C++ ABI lays them out on this processor.
#ifdef __x86_64__

namespace {

/// The place in the virtual table of a virtual member function: its pointer is one more than the offset in bytes. The
/// destructor has places 0 and 1.
template <typename Operation>
std::size_t slotOf(Operation operation)
{
    std::ptrdiff_t word = 0;
    std::memcpy(&word, &operation, sizeof(word));
    EXPECT_EQ(word % 2, 1) << "not virtual";
    return static_cast<std::size_t>(word - 1) / sizeof(void*);
}

/// Expects these operations at places 2, 3, …
template <typename... Operations>
void expectOrder(Operations... operations)
{
    std::size_t slot = 2;
    for (std::size_t found : {slotOf(operations)...}) {
        EXPECT_EQ(found, slot++);
    }
}

/// Expects these fields of `object` to lie in it in this order.
template <typename Object, typename... Fields>
void expectFields(const Object& object, const Fields&... fields)
{
    const auto* const begin = reinterpret_cast<const char*>(&object);
    const char* before = begin;
    for (const char* field : {reinterpret_cast<const char*>(&fields)...}) {
        EXPECT_GT(field, before);
        before = field;
    }
    EXPECT_LT(before, begin + sizeof(object));
}

} // namespace

TEST(BinaryContract, KeepsTheOperationsOfAProcessorInOrder)
{
    using P = ProcessorInterface;
    expectOrder(&P::loadParams, &P::saveParams, &P::pluginId, &P::displayName, &P::version, &P::description,
        &P::titleImage, &P::params, &P::reloadModel, &P::reserved11, &P::defectTypeNames, &P::archivePictures,
        &P::reserved14, &P::process, &P::clone, &P::capabilityFlags, &P::isResultOk, &P::resultRecord,
        &P::resultTemplate, &P::reserved21, &P::reserved22, &P::reserved23, &P::reserved24, &P::reserved25,
        &P::reserved26, &P::reserved27, &P::reserved28, &P::reserved29, &P::reserved30, &P::reserved31, &P::reserved32,
        &P::reserved33, &P::drawResult, &P::reserved35, &P::reserved36, &P::limitPairs);
}

TEST(BinaryContract, KeepsTheOperationsOfATool)
{
    expectOrder(&Tool::removableDiskPath, &Tool::toolIdentity, &Tool::toolDirectory, &Tool::savingAllowed,
        &Tool::imageWidth, &Tool::imageHeight, &Tool::image, &Tool::regions, &Tool::upstreamPose);
}

TEST(BinaryContract, KeepsTheOperationsOfAParameter)
{
    expectOrder(&ParamWrap::typeName, &ParamWrap::isSpecial, &ParamWrap::readJson, &ParamWrap::writeJson);
}

TEST(BinaryContract, KeepsTheFieldsOfParametersInOrder)
{
    const SeparateParam base("", "", true, true);
    expectFields(base, base.name, base.tip, base.hostFlag, base.category, base.isRunningShow, base.auxFlag);

    const LimitLineEditParam number("", "", true, true, nullptr, nullptr, nullptr, 1, nullptr, nullptr, nullptr);
    expectFields(number, number.auxFlag, number.valueType, number.rangeMin, number.rangeMax, number.rangeStep,
        number.value, number.lowThresh, number.highThresh, number.compensate);

    const CheckBoxParam group("", "", true, true, 1, nullptr, 0, nullptr, nullptr);
    expectFields(group, group.auxFlag, group.count, group.names, group.tips, group.values);

    const ComboBoxParam_ByValue list("", "", true, true, 1, nullptr, nullptr, nullptr);
    expectFields(list, list.auxFlag, list.itemTexts, list.itemValues, list.selectedText);
}

#endif
