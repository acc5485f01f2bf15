#include "codec/raw_extraction.h"

#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace kestrelon;
using namespace kestrelon::test;

namespace {

std::string headerBytes(const EncodedHeaderFields& fields = {})
{
    const EncodedHeaderBytes bytes = makeEncodedHeader(fields);
    return std::string(bytes.begin(), bytes.end());
}

// Data with the bytes a text-mode or string-based copy would mangle.
const std::string kData = std::string("\x01\x00\r\n\x1A\xFF", 6) + std::string(1000, '\x5A');

} // namespace

TEST(RawExtraction, WritesEverythingAfterTheHeader)
{
    TempDir dir;
    ScriptedPort port;
    writeBytes(dir / "in.tmp", headerBytes() + kData);
    writeBytes(dir / "out.bin", std::string(5000, 'x')); // replaced whole, not overwritten in place
    EXPECT_TRUE(extractRawEncodedData(dir / "in.tmp", dir / "out.bin", port));
    EXPECT_EQ(readBytes(dir / "out.bin"), kData);

    // Only the magic counts: a header with an odd version is still stripped.
    std::string oddHeader = headerBytes();
    oddHeader[20] = '\x07';
    writeBytes(dir / "odd.tmp", oddHeader + "abc");
    EXPECT_TRUE(extractRawEncodedData(dir / "odd.tmp", dir / "odd.bin", port));
    EXPECT_EQ(readBytes(dir / "odd.bin"), "abc");

    writeBytes(dir / "empty.tmp", headerBytes());
    EXPECT_TRUE(extractRawEncodedData(dir / "empty.tmp", dir / "empty.bin", port));
    ASSERT_TRUE(std::filesystem::exists(dir / "empty.bin"));
    EXPECT_EQ(std::filesystem::file_size(dir / "empty.bin"), 0u);
    EXPECT_TRUE(port.texts().empty());
}

TEST(RawExtraction, RefusesWhatIsNotAnEncodedFile)
{
    TempDir dir;
    // Too short to hold a header (even with the magic), the wrong magic, no file at all.
    const std::pair<const char*, std::optional<std::string>> cases[] = {
        {"empty.tmp", ""},
        {"short.tmp", headerBytes().substr(0, 47)},
        {"wrongmagic.tmp", std::string("\x00\xFF\x00\xFE", 4) + headerBytes().substr(4) + kData},
        {"missing.tmp", std::nullopt},
    };
    for (const auto& [name, bytes] : cases) {
        ScriptedPort port;
        const auto source = dir / "sub" / name;
        if (bytes)
            writeBytes(source, *bytes);
        EXPECT_FALSE(extractRawEncodedData(source, dir / "out.bin", port)) << name;
        EXPECT_EQ(port.texts(), std::vector<std::string>{std::string(name) + " is not a correct encoded file !"});
        EXPECT_FALSE(std::filesystem::exists(dir / "out.bin")) << name;
    }
}

TEST(RawExtraction, InspectReadsTheHeaderAndTheDataSize)
{
    TempDir dir;
    ScriptedPort port;
    EncodedHeaderFields fields;
    fields.sampleRate = 16000;
    fields.field36 = 9;
    writeBytes(dir / "a.tmp", headerBytes(fields) + kData);
    const auto info = inspectEncodedFile(dir / "a.tmp", port);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->header, fields);
    EXPECT_EQ(info->fileSize, kEncodedHeaderSize + kData.size());
    EXPECT_TRUE(port.texts().empty());

    // Unlike extraction, inspection checks the whole header.
    std::string badFormat = headerBytes();
    badFormat[21] = '\x03';
    writeBytes(dir / "f.tmp", badFormat);
    writeBytes(dir / "s.tmp", headerBytes().substr(0, 47));
    for (const char* name : {"f.tmp", "s.tmp", "missing.tmp"}) {
        ScriptedPort refused;
        EXPECT_FALSE(inspectEncodedFile(dir / name, refused)) << name;
        EXPECT_EQ(refused.texts(), std::vector<std::string>{std::string(name) + " is not a correct encoded file !"});
    }
}
