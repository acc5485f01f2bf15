#pragma once
// What SDL's "disk" audio device recorded. The device runs from the moment it
// is opened and writes silence until the player unpauses it, so a recording
// may begin with zeros that no sound put there.
#include <algorithm>
#include <cstdint>
#include <vector>

namespace kestrelon::test {

inline std::vector<std::int16_t> fromFirstSound(const std::vector<std::int16_t>& samples)
{
    const auto first = std::find_if(samples.begin(), samples.end(), [](std::int16_t s) { return s != 0; });
    return {first, samples.end()};
}

// True when `recording`, from its first sound on, begins with `sound` (also
// from its first sound on).
inline bool beginsWithSound(const std::vector<std::int16_t>& recording, const std::vector<std::int16_t>& sound)
{
    const std::vector<std::int16_t> heard = fromFirstSound(recording);
    const std::vector<std::int16_t> wanted = fromFirstSound(sound);
    return heard.size() >= wanted.size() && std::equal(wanted.begin(), wanted.end(), heard.begin());
}

} // namespace kestrelon::test
