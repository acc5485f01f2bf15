#pragma once
// "Save as WAV" of a waveform window: the whole sound or a stretch of it as a
// canonical mono 16-bit WAV file, whatever the source's own format was.
#include <cstdint>
#include <filesystem>
#include <span>

namespace kestrelon {

class UserPort;

// Saves samples [from, to) (end excluded). The name must end in ".wav"; a
// range outside the sound, a sound too long for the format and a failed write
// are each shown through `port`. False when nothing was saved.
bool saveWaveAs(const std::filesystem::path& target, std::span<const std::int16_t> samples, int sampleRate,
                std::int64_t from, std::int64_t to, UserPort& port);

} // namespace kestrelon
