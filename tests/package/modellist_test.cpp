#include "modellist.h"
#include "plugin/workfolder.h"

#include <gtest/gtest.h>

TEST(ModelList, PutsTheNewestVersionFirst)
{
    WorkFolder work;
    for (const char* name : {"ocr_a_p1_1_v1.dat", "ocr_a_p1_1_v2.dat", "ocr_a_p1.dat", "ocr_a_p1_1.json",
             "xocr_a_p1_1_v1.dat", "ocr_b_p12_3_fp16.trt", "ocr_a_q1_1_v1.dat", "ocr_a_p1_1_v1"}) {
        work.addModelFile(name);
    }
    QDir().mkdir("model/ocr_folder_p1_1_v1.trt");
    EXPECT_EQ(listModelFiles(), (QStringList{"ocr_b_p12_3_fp16.trt", "ocr_a_p1_1_v2.dat", "ocr_a_p1_1_v1.dat"}));
}

TEST(ModelList, IsEmptyWithoutModels)
{
    WorkFolder work;
    EXPECT_TRUE(listModelFiles().isEmpty());
    QDir().rmdir("model");
    EXPECT_TRUE(listModelFiles().isEmpty());
}
