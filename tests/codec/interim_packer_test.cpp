#include "codec/interim_packer.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>

#ifndef _WIN32
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace kestrelon;
using kestrelon::test::readBytes;
using kestrelon::test::writeBytes;

namespace {

std::string randomBytes(std::size_t count, unsigned seed)
{
    std::mt19937 random(seed);
    std::string bytes(count, '\0');
    for (char& c : bytes)
        c = char(random() & 0xFF);
    return bytes;
}

// 16-bit PCM as a recording has: a voiced tone under a syllable envelope, with a little noise.
std::string speechLike(std::size_t bytes, unsigned seed)
{
    std::mt19937 random(seed);
    std::string pcm(bytes, '\0');
    for (std::size_t n = 0; n + 1 < bytes; n += 2) {
        const double t = double(n / 2) / 16000.0;
        const auto sample =
            std::int16_t(std::lround(std::max(0.0, std::sin(6 * M_PI * t)) * 6000 * std::sin(240 * M_PI * t)) +
                         int(random() % 64) - 32);
        pcm[n] = char(sample & 0xFF);
        pcm[n + 1] = char((sample >> 8) & 0xFF);
    }
    return pcm;
}

std::size_t fileCount(const std::filesystem::path& folder)
{
    return std::size_t(std::distance(std::filesystem::directory_iterator(folder), {}));
}

} // namespace

TEST(InterimPacker, RoundTripsAnyDataByteForByte)
{
    kestrelon::test::TempDir dir;
    const std::pair<const char*, std::string> cases[] = {
        {"empty", ""},
        {"small", "SAF interim \x00\xFF\x01 data"},
        {"random", randomBytes(5 * 1024 * 1024, 7)},
        {"speech", speechLike(5 * 1024 * 1024, 11)},
    };
    for (const auto& [name, original] : cases) {
        SCOPED_TRACE(name);
        const auto raw = dir / (std::string(name) + ".raw");
        const auto packed = dir / (std::string(name) + ".tmp");
        const auto unpacked = dir / (std::string(name) + ".out");
        writeBytes(raw, original);
        ASSERT_TRUE(EncryptZip(raw, packed));
        ASSERT_TRUE(DecryptUnzip(packed, unpacked));
        EXPECT_TRUE(readBytes(unpacked) == original);
        if (std::string(name) == "speech") {
            EXPECT_LT(std::filesystem::file_size(packed), original.size() * 9 / 10);
        }
    }
    // Only the files asked for: no temporary scraps left beside them.
    EXPECT_EQ(fileCount(dir.path()), 3 * std::size(cases));
}

TEST(InterimPacker, HeaderIsLaidOutAsDocumented)
{
    const std::string packed = packInterim("hello").value();
    ASSERT_GT(packed.size(), kInterimHeaderBytes);
    const auto byte = [&](std::size_t at) { return unsigned(static_cast<unsigned char>(packed[at])); };
    EXPECT_EQ(packed.substr(0, 8), "KSTRLNIF");
    EXPECT_EQ(byte(8) | byte(9) << 8, 2u); // version
    EXPECT_EQ(byte(10) | byte(11) << 8, 0u); // flags
    EXPECT_EQ(byte(12), 5u); // original size, low byte
    EXPECT_EQ(byte(20), packed.size() - kInterimHeaderBytes); // packed size, low byte
    // The rest of the header is zero, the reserved field at 28 included.
    for (std::size_t at : {13, 14, 15, 16, 17, 18, 19, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31})
        EXPECT_EQ(byte(at), 0u) << at;
    // The payload is a zstd frame (magic 28 B5 2F FD).
    EXPECT_EQ(packed.substr(32, 4), "\x28\xB5\x2F\xFD");
}

TEST(InterimPacker, AFileOfTheFirstVersionStillUnpacks)
{
    // Packed by version 1, which kept a CRC-32 of the data at offset 28.
    const std::string first("\x4B\x53\x54\x52\x4C\x4E\x49\x46\x01\x00\x00\x00\x1A\x00\x00\x00\x00\x00\x00\x00"
                            "\x27\x00\x00\x00\x00\x00\x00\x00\x3A\x09\x98\x52\x28\xB5\x2F\xFD\x24\x1A\xD1\x00"
                            "\x00\x68\x65\x6C\x6C\x6F\x2C\x20\x70\x61\x63\x6B\x65\x64\x20\x62\x79\x20\x76\x65"
                            "\x72\x73\x69\x6F\x6E\x20\x31\xE6\x12\x90\xC2",
                            71);
    EXPECT_EQ(unpackInterim(first).value_or("refused"), "hello, packed by version 1");
    // Its data are still guarded, now by the frame's checksum.
    std::string damaged = first;
    damaged[50] = char(damaged[50] ^ 0x01);
    EXPECT_FALSE(unpackInterim(damaged).has_value());
}

TEST(InterimPacker, RefusesEveryDamageAndLeavesTheTargetUntouched)
{
    kestrelon::test::TempDir dir;
    const std::string original = speechLike(6000, 3) + "tail";
    const std::string good = packInterim(original).value();
    const auto damaged = dir / "damaged.tmp";
    const auto target = dir / "target.raw";
    writeBytes(target, "previous contents");

    const auto expectRefused = [&](const std::string& bytes, const std::string& what) {
        SCOPED_TRACE(what);
        writeBytes(damaged, bytes);
        EXPECT_FALSE(DecryptUnzip(damaged, target));
        EXPECT_EQ(readBytes(target), "previous contents");
        EXPECT_EQ(fileCount(dir.path()), 2u);
    };

    const auto flipped = [&](std::size_t at) {
        std::string bytes = good;
        bytes[at] = char(bytes[at] ^ 0xFF);
        return bytes;
    };
    // One byte changed anywhere, header or payload, is caught...
    for (std::size_t at = 0; at < good.size(); ++at)
        EXPECT_FALSE(unpackInterim(flipped(at)).has_value()) << "byte " << at << " flipped";
    // ...and as a file, refused without a trace.
    expectRefused(flipped(kInterimHeaderBytes + 5), "payload byte flipped");
    // Cut short inside the magic, inside the header, to the bare header, inside the payload; one byte too many.
    for (std::size_t length :
         {std::size_t(0), std::size_t(5), std::size_t(31), std::size_t(32), std::size_t(36), good.size() - 1})
        expectRefused(good.substr(0, length), "truncated to " + std::to_string(length));
    expectRefused(good + '\0', "trailing byte");
    // A missing source, to either side.
    EXPECT_FALSE(DecryptUnzip(dir / "absent.tmp", target));
    EXPECT_FALSE(EncryptZip(dir / "absent.raw", target));
    EXPECT_EQ(readBytes(target), "previous contents");

    // The undamaged file still unpacks over the same target.
    writeBytes(damaged, good);
    ASSERT_TRUE(DecryptUnzip(damaged, target));
    EXPECT_TRUE(readBytes(target) == original);
}

TEST(InterimPacker, PacksAndUnpacksInPlace)
{
    kestrelon::test::TempDir dir;
    const auto file = dir / "SAF1.tmp";
    const std::string original = speechLike(20000, 5);
    writeBytes(file, original);
    ASSERT_TRUE(EncryptZip(file, file));
    ASSERT_TRUE(DecryptUnzip(file, file)); // refused had the file not been packed
    EXPECT_TRUE(readBytes(file) == original);
    // In place, a refusal leaves the file as it was.
    EXPECT_FALSE(DecryptUnzip(file, file));
    EXPECT_TRUE(readBytes(file) == original);
    EXPECT_EQ(fileCount(dir.path()), 1u);
}

#if !defined(_WIN32) && !defined(__SANITIZE_ADDRESS__)
// A file that claims an enormous original behind a tiny zstd frame (whose own
// header claims the same) is refused before anything is allocated: unpacking
// runs in a child whose address space is capped far below the claim, so an
// allocation of the claimed size ends the child instead of passing unnoticed
// on a machine with memory to spare.
TEST(InterimPacker, AHugeClaimedSizeIsRefusedBeforeAnyAllocation)
{
    const std::uint64_t claimed = std::uint64_t(1) << 35; // 32 GiB
    std::string frame("\x28\xB5\x2F\xFD", 4);
    frame += char(0xE4); // 8-byte content size, single segment, content checksum
    for (int i = 0; i < 8; ++i)
        frame += char((claimed >> (8 * i)) & 0xFF);
    frame += std::string("\x03\x00\x10", 3); // the last block: 128 KiB, run-length coded...
    frame += 'x'; // ...of this byte
    frame += std::string(4, '\0'); // content checksum
    std::string file = "KSTRLNIF" + std::string("\x01\x00\x00\x00", 4);
    for (int i = 0; i < 8; ++i)
        file += char((claimed >> (8 * i)) & 0xFF);
    for (int i = 0; i < 8; ++i)
        file += char((std::uint64_t(frame.size()) >> (8 * i)) & 0xFF);
    file += std::string(4, '\0') + frame;

    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const rlimit cap{rlim_t(2) << 30, rlim_t(2) << 30};
        setrlimit(RLIMIT_AS, &cap);
        int code = 2; // an allocation that failed, or anything else thrown
        try {
            code = unpackInterim(file).has_value() ? 1 : 0;
        } catch (...) {}
        _exit(code);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0)
        << "unpacking allocated what the file claims, or took the claim as data";
}
#endif
