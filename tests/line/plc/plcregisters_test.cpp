#include "plc/plcregisters.h"

#include <gmock/gmock.h>

namespace scribo::line::plc {
namespace {

using testing::ElementsAre;

TEST(PlcRegisters, HoldTheFirstCharacterInTheHighByte)
{
    EXPECT_THAT(packText(QStringLiteral("LOT"), 3), ElementsAre(0x4c4f, 0x5400, 0));
}

TEST(PlcRegisters, LeaveOutWhatDoesNotFit)
{
    EXPECT_THAT(packText(QStringLiteral("ABCDE"), 2), ElementsAre(0x4142, 0x4344));
    EXPECT_THAT(packText(QStringLiteral("ABCDE"), 0), ElementsAre());
}

TEST(PlcRegisters, WriteAQuestionMarkForWhatIsNotAscii)
{
    EXPECT_THAT(packText(QStringLiteral("é\t日~"), 2), ElementsAre(0x3f3f, 0x3f7e));
    EXPECT_THAT(packText(QStringLiteral("A\nB"), 2), ElementsAre(0x410a, 0x4200));
}

TEST(PlcRegisters, GiveATextUpToItsEnd)
{
    EXPECT_EQ(unpackText({0x4c4f, 0x5400, 0x5858}), QStringLiteral("LOT"));
    EXPECT_EQ(unpackText({0x4c4f, 0x5431}), QStringLiteral("LOT1"));
    EXPECT_EQ(unpackText({0x0041}), QString());
    EXPECT_EQ(unpackText({}), QString());
}

TEST(PlcRegisters, GiveATextWithoutSpacesAtItsEnds)
{
    EXPECT_EQ(unpackText({0x2041, 0x2042, 0x2020}), QStringLiteral("A B"));
}

TEST(PlcRegisters, GiveAQuestionMarkForWhatIsNotAscii)
{
    EXPECT_EQ(unpackText({0xe941, 0x0742}), QStringLiteral("?A?B"));
}

TEST(PlcRegisters, HoldTheLowHalfOfANumberFirst)
{
    EXPECT_THAT(packNumber(0x123456789ULL), ElementsAre(0x6789, 0x2345));
    EXPECT_THAT(packNumber(0), ElementsAre(0, 0));
}

} // namespace
} // namespace scribo::line::plc
