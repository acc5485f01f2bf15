#include "support/speech_input.h"

#include "common/messages.h"
#include "common/paths.h"
#include "wave/resample.h"
#include "wave/wave_file.h"

namespace kestrelon::support {

bool loadSpeechAtRate(const std::filesystem::path& path, int workingRate, std::vector<std::int16_t>& samples,
                      std::string* error, int* sourceRate)
{
    samples.clear();
    WaveFile wave;
    if (!wave.load(path)) {
        if (error)
            *error = wave.error();
        return false;
    }
    if (sourceRate)
        *sourceRate = wave.sampleRate();
    if (!canResample(wave.sampleRate(), workingRate)) {
        if (error)
            *error = utf8FromPath(path.filename()) + std::string(msg::kWaveRateUnsupported);
        return false;
    }
    samples = resample(wave.takeSamples(), wave.sampleRate(), workingRate);
    return true;
}

} // namespace kestrelon::support
