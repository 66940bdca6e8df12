#include <QCoreApplication>

#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv); // Qt looks for its database drivers beside it
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
