// The main function of tests that use Qt without painting.

#include <QCoreApplication>

#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
