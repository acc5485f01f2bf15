// The user's settings file: read whatever it holds, keep defaults for what
// is not a value, and write back what can be read again.
#include "fuzz_file.h"
#include "settings/settings_store.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kestrelon;
    const auto folder = fuzz::scratchFolder() / "config";
    fuzz::inputFile(data, size, "config/Corvane/Kestrelon.conf");
    SettingsStore store;
    if (!store.load(folder))
        return 0;
    // "Multiple" is kept with six decimals: the scale comes back as written.
    SettingsStore expected = store;
    expected.columnScale = parseColumnScale(formatColumnScale(store.columnScale));
    SettingsStore again;
    if (!store.save(folder) || !again.load(folder) || !(again == expected))
        std::abort();
    return 0;
}
