#include "common/dynamic_library.h"
#include "common/paths.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <utility>

using namespace kestrelon;

namespace {

using AddFunction = int (*)(int, int);
using CounterFunction = int (*)();

const std::filesystem::path kTestLibrary = KESTRELON_TEST_LIBRARY;

} // namespace

TEST(DynamicLibrary, BindsExportsByNameAndUnloadsForReal)
{
    DynamicLibrary library;
    ASSERT_TRUE(library.load(kTestLibrary)) << library.errorText();

    const auto add = library.function<AddFunction>("kestrelon_test_add");
    ASSERT_NE(add, nullptr);
    EXPECT_EQ(add(40, 2), 42);
    EXPECT_EQ(library.symbol("kestrelon_test_missing"), nullptr);

    const auto next = library.function<CounterFunction>("kestrelon_test_next_call");
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(next(), 1);
    EXPECT_EQ(next(), 2);

    // Unloaded, nothing is bound; loaded again, the library's state starts over.
    library.unload();
    EXPECT_FALSE(library.isLoaded());
    EXPECT_EQ(library.symbol("kestrelon_test_add"), nullptr);
    ASSERT_TRUE(library.load(kTestLibrary)) << library.errorText();
    EXPECT_EQ(library.function<CounterFunction>("kestrelon_test_next_call")(), 1);

    // Moving hands the library over without unloading it.
    DynamicLibrary moved(std::move(library));
    EXPECT_FALSE(library.isLoaded());
    EXPECT_EQ(moved.function<CounterFunction>("kestrelon_test_next_call")(), 2);
    library = std::move(moved);
    EXPECT_EQ(library.function<CounterFunction>("kestrelon_test_next_call")(), 3);
}

TEST(DynamicLibrary, LoadsFromANonAsciiPathAndReportsFailures)
{
    kestrelon::test::TempDir dir;
    const auto folder = dir.path() / pathFromUtf8("Algos \xC3\x84\xE8\xAF\xAD\xE9\x9F\xB3");
    std::filesystem::create_directories(folder);
    const auto copy = folder / pathFromUtf8(libraryFileName("St\xC3\xBCtze"));
    std::filesystem::copy_file(kTestLibrary, copy);

    DynamicLibrary library;
    ASSERT_TRUE(library.load(copy)) << library.errorText();
    EXPECT_EQ(library.function<AddFunction>("kestrelon_test_add")(1, 2), 3);

    // A failed load leaves nothing loaded (the previous library is released)
    // and says why.
    EXPECT_FALSE(library.load(folder / libraryFileName("absent")));
    EXPECT_FALSE(library.isLoaded());
    EXPECT_FALSE(library.errorText().empty());

    // A file that is not a library at all.
    const auto bogus = folder / libraryFileName("bogus");
    kestrelon::test::writeBytes(bogus, "not a library");
    EXPECT_FALSE(library.load(bogus));
    EXPECT_FALSE(library.errorText().empty());
}
