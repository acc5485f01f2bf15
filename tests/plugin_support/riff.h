#pragma once
// Hand-built WAV files in encodings the codecs share with the WAV format, so
// that libsndfile's independent decoders can check the codecs' bit layouts.
#include <cstdint>
#include <string>

namespace kestrelon::test {

inline void putLe(std::string& out, std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

// A RIFF WAVE file of a "fmt " chunk, a "fact" chunk and a "data" chunk.
inline std::string riffWave(const std::string& fmt, std::uint32_t frames, const std::string& data)
{
    std::string body = "WAVE";
    body += "fmt ";
    putLe(body, static_cast<std::uint32_t>(fmt.size()), 4);
    body += fmt;
    body += "fact";
    putLe(body, 4, 4);
    putLe(body, frames, 4);
    body += "data";
    putLe(body, static_cast<std::uint32_t>(data.size()), 4);
    body += data;
    std::string file = "RIFF";
    putLe(file, static_cast<std::uint32_t>(body.size()), 4);
    return file + body;
}

} // namespace kestrelon::test
