#include "wave/wave_save.h"

#include "common/file_io.h"
#include "common/messages.h"
#include "common/user_port.h"
#include "wave/wave_file.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace kestrelon {

namespace {

bool hasWavExtension(const std::filesystem::path& target)
{
    std::string extension = target.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return extension == ".wav" && target.stem() != "";
}

} // namespace

bool saveWaveAs(const std::filesystem::path& target, std::span<const std::int16_t> samples, int sampleRate,
                std::int64_t from, std::int64_t to, UserPort& port)
{
    if (!hasWavExtension(target)) {
        port.showMessage(msg::kWaveSaveExtension);
        return false;
    }
    if (from < 0 || to < from || to > std::int64_t(samples.size())) {
        port.showMessage(msg::kWaveRangeInvalid);
        return false;
    }
    const std::string bytes = wav16Bytes(samples.subspan(std::size_t(from), std::size_t(to - from)), sampleRate);
    if (bytes.empty()) {
        port.showMessage(msg::kWaveWriteError);
        return false;
    }
    if (!writeFileAtomically(target, bytes)) {
        port.showMessage(msg::kWaveSaveFailed);
        return false;
    }
    return true;
}

} // namespace kestrelon
