// WAV input through the wave reader: refused or read whole, never half.
#include "fuzz_file.h"
#include "wave/wave_file.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kestrelon;
    const auto path = fuzz::inputFile(data, size, "a.wav");
    WaveFile wave;
    if (wave.load(path) && std::int64_t(wave.samples().size()) != wave.frameCount())
        std::abort();
    return 0;
}
