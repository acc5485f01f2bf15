// Play lists (".set"): any bytes read, at most the list's limit kept.
#include "fuzz_file.h"
#include "playback/play_list_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kestrelon;
    const auto path = fuzz::inputFile(data, size, "a.set");
    PlayList list;
    loadPlayList(path, list, fuzz::quietPort());
    return 0;
}
