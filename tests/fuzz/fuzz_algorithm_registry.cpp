// A project's algorithm registry (Algos/dllsetinfo.ini): whatever it reads
// must write and read back the same.
#include "common/paths.h"
#include "fuzz_file.h"
#include "host/algorithm_registry.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kestrelon;
    const auto folder = fuzz::scratchFolder() / "project";
    const auto path = algorithmRegistryPath(folder);
    fuzz::inputFile(data, size, utf8FromPath(path.lexically_relative(fuzz::scratchFolder())));
    std::vector<AlgoRegEntry> entries;
    if (!loadAlgorithmRegistry(folder, entries, fuzz::quietPort()))
        return 0;
    std::vector<AlgoRegEntry> again;
    if (!saveAlgorithmRegistry(folder, entries) || !loadAlgorithmRegistry(folder, again, fuzz::quietPort()) ||
        again.size() != entries.size())
        std::abort();
    return 0;
}
