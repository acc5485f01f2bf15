#include "failing_codec_io.h"

#include "codec/encoded_header.h"
#include "common/file_io.h"
#include "common/paths.h"

#include <cstdlib>
#include <string>

namespace {

// The wave files of the tests are small; anything larger is refused.
constexpr std::uintmax_t kMaxInput = 64u * 1024u * 1024u;

} // namespace

extern "C" void fc_log(const char* op, const char* arg1, const char* arg2)
{
    try {
        const char* logPath = std::getenv("KESTRELON_FAILING_CODEC_LOG");
        if (logPath == nullptr || *logPath == '\0')
            return;
        const auto path = kestrelon::pathFromUtf8(logPath);
        std::string text = kestrelon::readFile(path, kMaxInput).bytes;
        text += op;
        for (const char* arg : {arg1, arg2}) {
            if (arg == nullptr)
                continue;
            text += '\t';
            text += arg;
        }
        text += '\n';
        kestrelon::writeFileAtomically(path, text);
    } catch (...) {
        // Nothing may cross into the host.
    }
}

extern "C" int fc_encode(const char* wave_path, const char* output_path)
{
    try {
        const kestrelon::ReadResult wave = kestrelon::readFile(kestrelon::pathFromUtf8(wave_path), kMaxInput);
        if (wave.status != kestrelon::ReadStatus::Ok)
            return 1;
        const kestrelon::EncodedHeaderBytes header = kestrelon::makeEncodedHeader();
        std::string bytes(reinterpret_cast<const char*>(header.data()), header.size());
        bytes += wave.bytes;
        return kestrelon::writeFileAtomically(kestrelon::pathFromUtf8(output_path), bytes) ? 0 : 1;
    } catch (...) {
        return 1;
    }
}

extern "C" int fc_decode(const char* encoded_path, const char* wave_path)
{
    try {
        const kestrelon::ReadResult encoded =
            kestrelon::readFile(kestrelon::pathFromUtf8(encoded_path), kMaxInput + kestrelon::kEncodedHeaderSize);
        if (encoded.status != kestrelon::ReadStatus::Ok)
            return 1;
        if (!kestrelon::parseEncodedHeader(std::string_view(encoded.bytes)))
            return 2;
        const std::string_view body = std::string_view(encoded.bytes).substr(kestrelon::kEncodedHeaderSize);
        return kestrelon::writeFileAtomically(kestrelon::pathFromUtf8(wave_path), body) ? 0 : 1;
    } catch (...) {
        return 1;
    }
}

extern "C" int32_t fc_encoded_length(const char* path)
{
    try {
        const kestrelon::ReadResult encoded =
            kestrelon::readFile(kestrelon::pathFromUtf8(path), kMaxInput + kestrelon::kEncodedHeaderSize);
        if (encoded.status != kestrelon::ReadStatus::Ok ||
            !kestrelon::parseEncodedHeader(std::string_view(encoded.bytes)))
            return -1;
        return static_cast<int32_t>(encoded.bytes.size() - kestrelon::kEncodedHeaderSize);
    } catch (...) {
        return -1;
    }
}
