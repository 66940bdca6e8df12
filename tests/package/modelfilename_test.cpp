#include "modelfilename.h"

#include <QDir>
#include <gtest/gtest.h>

namespace {

TEST(ModelFileName, LeadsToTypeModelAndConfiguration)
{
    const auto name = splitModelFileName("/models/crnn_plate_line_v2_fp16.trt");
    ASSERT_TRUE(name);
    EXPECT_EQ(name->engineType, "trt");
    EXPECT_EQ(name->modelName, "plate_line_v2");
    EXPECT_EQ(name->configPath, "/models/crnn_plate_line_v2.json");
}

TEST(ModelFileName, NeedsExactlyFivePieces)
{
    for (const char* path : {"a_b_c_d.trt", "a_b_c_d_e_f.trt", "model.trt", "_____.trt", "", "/", "/a_b_c_d_e.trt/"}) {
        EXPECT_FALSE(splitModelFileName(path)) << path;
    }
}

TEST(ModelFileName, DropsEmptyPieces)
{
    const auto name = splitModelFileName("/m/a__b_c_d_e.trt");
    ASSERT_TRUE(name);
    EXPECT_EQ(name->modelName, "b_c_d");
    EXPECT_EQ(name->configPath, "/m/a_b_c_d.json");
    // The piece that is only the suffix is not empty.
    EXPECT_TRUE(splitModelFileName("/m/_a_b_c_d_.trt"));
}

TEST(ModelFileName, UnderscoresInTheFolderTakeNoPart)
{
    const auto name = splitModelFileName("/my_long_model_folder/a_b_c_d_e.trt");
    ASSERT_TRUE(name);
    EXPECT_EQ(name->configPath, "/my_long_model_folder/a_b_c_d.json");
}

TEST(ModelFileName, TheTypeIsWhatFollowsTheLastDot)
{
    EXPECT_EQ(splitModelFileName("a_b_c_d_e.v1.TRT")->engineType, "TRT");
    EXPECT_EQ(splitModelFileName("a_b_c_d_e")->engineType, "");
    EXPECT_EQ(splitModelFileName("a_b_c_d_e.")->engineType, "");
    // Without a dot in the last piece the suffix begins earlier.
    EXPECT_EQ(splitModelFileName("a_b.x_c_d_e")->engineType, "x_c_d_e");
}

TEST(ModelFileName, ARelativePathResolvesAgainstTheWorkingDirectory)
{
    const auto name = splitModelFileName("./model/a_b_c_d_e.trt");
    ASSERT_TRUE(name);
    EXPECT_EQ(name->configPath, QDir::currentPath() + "/model/a_b_c_d.json");
}

TEST(ModelFileName, KeepsCharactersBeyondAscii)
{
    const auto name = splitModelFileName("/模型/ocr_印刷_p1_é_v1.trt");
    ASSERT_TRUE(name);
    EXPECT_EQ(name->modelName, "印刷_p1_é");
    EXPECT_EQ(name->configPath, "/模型/ocr_印刷_p1_é.json");
}

} // namespace
