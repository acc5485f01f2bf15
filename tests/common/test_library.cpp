// A tiny plug-in for the dynamic-library tests: plain C exports, as the real
// plug-ins have, and a call counter that starts again only when the library is
// really unloaded and loaded anew.
#if defined(_WIN32)
#define KESTRELON_TEST_EXPORT extern "C" __declspec(dllexport)
#else
#define KESTRELON_TEST_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {
int g_calls = 0;
}

KESTRELON_TEST_EXPORT int kestrelon_test_add(int a, int b)
{
    return a + b;
}

KESTRELON_TEST_EXPORT int kestrelon_test_next_call()
{
    return ++g_calls;
}
