#include "export/firmware_export.h"

#include "support/files.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

using namespace kestrelon;
using kestrelon::test::readBytes;
using kestrelon::test::TempDir;
using kestrelon::test::writeBytes;

namespace {

ExportedFile item(std::string name, std::string bytes, std::string bitRate = "16000", std::uint32_t sampleRate = 8000)
{
    ExportedFile file;
    file.exportName = std::move(name);
    file.bodyName = "KS-1 Voice";
    file.algoName = "ImaAdpcm";
    file.bitRate = std::move(bitRate);
    file.sampleRate = sampleRate;
    file.bytes = std::move(bytes);
    return file;
}

std::string randomBytes(std::size_t size, unsigned seed)
{
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& c : bytes)
        c = static_cast<char>(random() & 0xFF);
    return bytes;
}

std::uint32_t numberAt(const std::string& image, std::size_t at, int size, bool big)
{
    std::uint32_t value = 0;
    for (int i = 0; i < size; ++i) {
        const auto byte =
            static_cast<std::uint32_t>(static_cast<unsigned char>(image[at + static_cast<std::size_t>(i)]));
        value |= byte << (8 * (big ? size - 1 - i : i));
    }
    return value;
}

// Names a firmware engineer's own script gets wrong: blanks and dashes, a
// leading digit, two names equal but for case, one stem with two extensions,
// a comment's end inside a name.
std::vector<ExportedFile> awkwardItems()
{
    return {item("hello world-1.adp", randomBytes(300, 1)), item("Hello World 1.c2", randomBytes(13, 2), "2400"),
            item("9lives.adp", std::string("\0\xff\x80", 3)), item("9lives.c2", ""),
            item("a*/b.bin", randomBytes(1, 3))};
}

} // namespace

TEST(FirmwareExport, IdentifiersAreValidUniqueWithoutCaseAndStable)
{
    EXPECT_EQ(firmwareIdentifiers(awkwardItems(), "speech"),
              (std::vector<std::string>{"speech_hello_world_1", "speech_hello_world_1_2", "speech_9lives",
                                        "speech_9lives_2", "speech_a__b"}));
    FirmwareOptions options;
    options.baseName = "Speech";
    EXPECT_NE(firmwareOptionsError(options), "");
    options.baseName = "1speech";
    EXPECT_NE(firmwareOptionsError(options), "");
    options.baseName = "speech";
    for (std::uint32_t bad : {0u, 3u, 131072u}) {
        options.alignment = bad;
        EXPECT_NE(firmwareOptionsError(options), "") << bad;
    }
    options.alignment = 1;
    EXPECT_EQ(firmwareOptionsError(options), "");
}

// The generated files compile warning-free with the system's C compiler, and
// a program built from them sees exactly the exported bytes through the table.
TEST(FirmwareExport, TheCFilesCompileAndHoldExactlyTheExportedBytes)
{
    TempDir dir;
    const std::vector<ExportedFile> files = awkwardItems();
    FirmwareOptions options;
    options.format = FirmwareFormat::C;
    writeBytes(dir / "speech_data.h", firmwareCHeader(files, options));
    writeBytes(dir / "speech_data.c", firmwareCSource(files, options));
    writeBytes(dir / "main.c", R"(#include "speech_data.h"
#include <stdio.h>
int main(void)
{
    unsigned i, j;
    printf("%u %u\n", (unsigned)SPEECH_DATA_COUNT, (unsigned)SPEECH_DATA_TOTAL_BYTES);
    for (i = 0; i < SPEECH_DATA_COUNT; ++i) {
        const struct speech_data_entry *e = &speech_data_table[i];
        printf("%lu %lu %lu:", (unsigned long)e->length, (unsigned long)e->sample_rate, (unsigned long)e->bit_rate);
        for (j = 0; j < e->length; ++j)
            printf("%02x", e->data[j]);
        printf("\n");
    }
    return SPEECH_DATA_9LIVES_2 == 3 && SPEECH_DATA_HELLO_WORLD_1_2_LENGTH == 13u ? 0 : 1;
}
)");
    const std::string d = dir.path().string();
    const std::string compile = "cc -std=c99 -Wall -Wextra -Werror -pedantic -I'" + d + "' '" + d + "/main.c' '" + d +
                                "/speech_data.c' -o '" + d + "/dump' 2>'" + d + "/cc.log'";
    ASSERT_EQ(std::system(compile.c_str()), 0) << readBytes(dir / "cc.log");
    ASSERT_EQ(std::system(("'" + d + "/dump' >'" + d + "/dump.txt'").c_str()), 0);

    std::string expected = "5 317\n";
    for (const ExportedFile& file : files) {
        expected += std::to_string(file.bytes.size()) + " 8000 " + file.bitRate + ":";
        for (unsigned char c : file.bytes) {
            char hex[3];
            std::snprintf(hex, sizeof hex, "%02x", c);
            expected += hex;
        }
        expected += "\n";
    }
    EXPECT_EQ(readBytes(dir / "dump.txt"), expected);
}

TEST(FirmwareExport, TheImagesTableOfContentsLocatesEveryItemInEitherByteOrder)
{
    const std::vector<ExportedFile> files = awkwardItems();
    for (const bool big : {false, true}) {
        FirmwareOptions options;
        options.format = FirmwareFormat::Image;
        options.alignment = 64;
        options.bigEndian = big;
        options.padByte = 0xA5;
        const std::string image = firmwareImage(files, true, options);
        ASSERT_EQ(image.substr(0, 4), "KSPD");
        EXPECT_EQ(numberAt(image, 4, 2, big), 1u);
        EXPECT_EQ(numberAt(image, 6, 2, big), 1u); // headers kept
        ASSERT_EQ(numberAt(image, 8, 4, big), files.size());
        EXPECT_EQ(numberAt(image, 12, 4, big), 64u);
        std::size_t end = 16 + 16 * files.size();
        for (std::size_t i = 0; i < files.size(); ++i) {
            const std::size_t entry = 16 + 16 * i;
            const std::uint32_t offset = numberAt(image, entry, 4, big);
            const std::uint32_t length = numberAt(image, entry + 4, 4, big);
            EXPECT_EQ(offset % 64, 0u);
            EXPECT_EQ(image.substr(offset, length), files[i].bytes) << i;
            EXPECT_EQ(numberAt(image, entry + 8, 4, big), 8000u);
            EXPECT_EQ(numberAt(image, entry + 12, 4, big), std::stoul(files[i].bitRate));
            EXPECT_EQ(image.substr(end, offset - end), std::string(offset - end, '\xA5')) << i;
            end = offset + length;
        }
        EXPECT_EQ(image.size(), end);
    }
}
