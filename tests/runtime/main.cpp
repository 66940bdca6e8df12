#include <gmock/gmock.h>

/// A failed allocation is a case of its own here, also under the address sanitizer.
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
