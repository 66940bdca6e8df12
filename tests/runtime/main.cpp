#include <gmock/gmock.h>

// A failed allocation is a case of its own here, also under the sanitizers, which look for these.
#define SCRIBO_SANITIZER_HOOK extern "C" __attribute__((visibility("default"))) const char*

SCRIBO_SANITIZER_HOOK __asan_default_options()
{
    return "allocator_may_return_null=1";
}

SCRIBO_SANITIZER_HOOK __tsan_default_options()
{
    return "allocator_may_return_null=1";
}

/// oneDNN is not instrumented: the thread sanitizer sees what it copies, but not the locks around it.
SCRIBO_SANITIZER_HOOK __tsan_default_suppressions()
{
    return "called_from_lib:libdnnl.so.2\n";
}

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
