#pragma once
// A source wave as a codec takes it in: 16-bit mono at the codec's own rate.
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace kestrelon::support {

// Loads the wave (any encoding the host reads, mixed down to mono) and
// resamples it to workingRate, keeping its duration. On failure samples is
// left empty, *error (when given) tells why, and the result is false.
// *sourceRate (when given) receives the file's own rate once it is read, so a
// caller can map positions in the file onto the working rate.
bool loadSpeechAtRate(const std::filesystem::path& path, int workingRate, std::vector<std::int16_t>& samples,
                      std::string* error = nullptr, int* sourceRate = nullptr);

} // namespace kestrelon::support
