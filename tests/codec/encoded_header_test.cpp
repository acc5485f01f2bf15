#include "codec/encoded_header.h"

#include <gtest/gtest.h>

#include <vector>

using namespace kestrelon;

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes toVector(const EncodedHeaderBytes& bytes)
{
    return Bytes(bytes.begin(), bytes.end());
}

// A header with a different, non-zero value in every byte of every field,
// written out by hand from the layout.
const Bytes kCustomHeader = {
    0x00, 0xFF, 0x00, 0xFF, // magic
    'A',  'B',  'C',  'D',  'E', 'F', 'G', 'H', // signature, all 16 bytes used
    'I',  'J',  'K',  'L',  'M', 'N', 'O', 'P', 0xFE, 0x02, // version, format code
    0x34, 0x12, // field22 0x1234
    0x78, 0x56, // field24 0x5678
    0xF0, 0xDE, 0xBC, 0x9A, // sample rate 0x9ABCDEF0
    0xA9, 0xCB, 0xED, 0x0F, // field30 0x0FEDCBA9
    0xB2, 0xA1, // field34 0xA1B2
    0xC3, // field36
    0,    0,    0,    0,    0,   0,   0,   0,   0,    0,    0,
};

EncodedHeaderFields customFields()
{
    EncodedHeaderFields fields;
    fields.signature = "ABCDEFGHIJKLMNOP";
    fields.field22 = 0x1234;
    fields.field24 = 0x5678;
    fields.sampleRate = 0x9ABCDEF0u;
    fields.field30 = 0x0FEDCBA9u;
    fields.field34 = 0xA1B2;
    fields.field36 = 0xC3;
    return fields;
}

} // namespace

TEST(EncodedHeader, DefaultHeaderBytes)
{
    const Bytes expected = {
        0x00, 0xFF, 0x00, 0xFF, 'C',  'O',  'R',  'V', 'A', 'N', 'E', ' ', 'S', 'P', 'E', 'E', 'C', 'H',
        0,    0,    0xFE, 0x02, 0x00, 0x00, // 0
        0x10, 0x00, // 16
        0x40, 0x1F, 0x00, 0x00, // 8000
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,
    };
    ASSERT_EQ(expected.size(), kEncodedHeaderSize);
    EXPECT_EQ(toVector(makeEncodedHeader()), expected);

    EXPECT_EQ(parseEncodedHeader(expected), EncodedHeaderFields{});
}

TEST(EncodedHeader, EveryFieldAtItsOffsetBothWays)
{
    EXPECT_EQ(toVector(makeEncodedHeader(customFields())), kCustomHeader);

    const auto parsed = parseEncodedHeader(kCustomHeader);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(*parsed, customFields());

    // Bytes after the header are data, not header.
    Bytes withData = kCustomHeader;
    withData.insert(withData.end(), {0xAA, 0xBB});
    EXPECT_EQ(parseEncodedHeader(withData), parsed);

    // A longer signature is cut to its 16 bytes; a shorter one stops at its zero.
    EncodedHeaderFields longName = customFields();
    longName.signature += "QRS";
    EXPECT_EQ(parseEncodedHeader(makeEncodedHeader(longName))->signature, "ABCDEFGHIJKLMNOP");
    EncodedHeaderFields shortName = customFields();
    shortName.signature = "X";
    EXPECT_EQ(parseEncodedHeader(makeEncodedHeader(shortName)), shortName);
}

TEST(EncodedHeader, LongFormReadsEveryLaterFieldTwoBytesOn)
{
    // Version 0xFF: two extra bytes after field24, the rest moved on, the padding two shorter.
    Bytes longForm = kCustomHeader;
    longForm[20] = 0xFF;
    longForm.insert(longForm.begin() + 26, {0xEE, 0xEE});
    longForm.resize(kCustomHeader.size());
    const auto parsed = parseEncodedHeader(longForm);
    ASSERT_TRUE(parsed);
    EncodedHeaderFields expected = customFields();
    expected.version = 0xFF;
    EXPECT_EQ(*parsed, expected);

    // Written back, the long form keeps its layout (extra bytes zero).
    Bytes written = longForm;
    written[26] = written[27] = 0;
    EXPECT_EQ(toVector(makeEncodedHeader(expected)), written);
}

TEST(EncodedHeader, RefusesWhatIsNotAHeader)
{
    EXPECT_FALSE(parseEncodedHeader(Bytes{}));
    EXPECT_FALSE(parseEncodedHeader(Bytes(kCustomHeader.begin(), kCustomHeader.end() - 1)));

    // Each magic byte, then the version (20) and the format code (21) next to their good values.
    const std::pair<std::size_t, std::uint8_t> damage[] = {{0, 0x01},  {1, 0xFE},  {2, 0x01},  {3, 0xFE},
                                                           {20, 0x00}, {20, 0xFD}, {21, 0x01}, {21, 0x03}};
    for (const auto& [at, value] : damage) {
        Bytes bad = kCustomHeader;
        bad[at] = value;
        EXPECT_FALSE(parseEncodedHeader(bad)) << "byte " << at << " = " << int(value);
    }
}
