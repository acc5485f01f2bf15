// The body settings file: bodies, algorithms, rates and volumes from any bytes.
#include "bodies/body_settings.h"
#include "fuzz_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kestrelon;
    const auto path = fuzz::inputFile(data, size, "KestrelonBodySetting.dat");
    BodySettings bodies;
    bodies.load(path, fuzz::scratchFolder(), fuzz::quietPort());
    return 0;
}
