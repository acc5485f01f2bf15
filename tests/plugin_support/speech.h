#pragma once
// Real speech for the codec tests, from Debian's codec2-examples.
#include "support/speech_input.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace kestrelon::test {

inline const std::filesystem::path kSpeechFolder = "/usr/share/codec2/wav";

// The named recording at `rate`; a test fails when it is not installed.
inline std::vector<std::int16_t> speechAt(const std::string& name, int rate)
{
    std::vector<std::int16_t> samples;
    std::string error;
    EXPECT_TRUE(support::loadSpeechAtRate(kSpeechFolder / name, rate, samples, &error))
        << error << " (install Debian's codec2-examples)";
    return samples;
}

} // namespace kestrelon::test
