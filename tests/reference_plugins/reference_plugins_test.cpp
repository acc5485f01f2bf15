// The reference codec plug-ins, loaded from the program folder and driven
// through the C contract: round trips on real speech at every bit rate, the
// exact layout of what they write, speech events in the stream, and refusal
// of what they cannot do.
#include "codec_driver.h"

#include "codec/encoded_header.h"
#include "plugin_support/speech.h"
#include "support/event_block.h"
#include "support/files.h"
#include "support/temp_dir.h"
#include "wave/segmental_snr.h"
#include "wave/speech_events.h"
#include "wave/wave_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <tuple>

using namespace kestrelon;
using namespace kestrelon::test;

namespace {

enum class Kind { Waveform, Codec2, Speex };

struct Case {
    std::string codec;
    std::string bitRate;
    int rate; // working rate, Hz
    Kind kind;
    int bitsPerSample; // waveform codecs
    int samplesPerFrame; // frame codecs
    int bitsPerFrame;
    double floor; // segmental SNR (dB) for waveform codecs, envelope correlation for the others
};

// The codecs' promises, written down independently of their code. Quality
// floors lie below the lower of what each measured on hts1a and wia: segmental
// SNR 2 to 3 dB below (ImaAdpcm 22.3 / 20.2 / 18.4 dB on hts1a at 8 / 6 /
// 4 kHz, MuLaw 29.7 dB), envelope correlation 0.04 to 0.09 below (Codec2
// 0.89 to 0.98, Speex 0.89 to 0.998; wia's digital silence costs the most).
// Pcm is lossless at its own rate.
const std::vector<Case> kCases = {
    {"ImaAdpcm", "32000", 8000, Kind::Waveform, 4, 0, 0, 20},
    {"ImaAdpcm", "24000", 6000, Kind::Waveform, 4, 0, 0, 18},
    {"ImaAdpcm", "16000", 4000, Kind::Waveform, 4, 0, 0, 16},
    {"MuLaw", "64000", 8000, Kind::Waveform, 8, 0, 0, 27},
    {"MuLaw", "48000", 6000, Kind::Waveform, 8, 0, 0, 27},
    {"Pcm", "128000", 8000, Kind::Waveform, 16, 0, 0, kSnrCeilingDb},
    {"Pcm", "256000", 16000, Kind::Waveform, 16, 0, 0, kSnrCeilingDb},
    {"Codec2", "3200", 8000, Kind::Codec2, 0, 160, 64, 0.85},
    {"Codec2", "2400", 8000, Kind::Codec2, 0, 160, 48, 0.85},
    {"Codec2", "1600", 8000, Kind::Codec2, 0, 320, 64, 0.85},
    {"Codec2", "1400", 8000, Kind::Codec2, 0, 320, 56, 0.85},
    {"Codec2", "1300", 8000, Kind::Codec2, 0, 320, 52, 0.85},
    {"Codec2", "1200", 8000, Kind::Codec2, 0, 320, 48, 0.85},
    {"Codec2", "700", 8000, Kind::Codec2, 0, 320, 28, 0.85},
    {"Codec2", "450", 8000, Kind::Codec2, 0, 320, 18, 0.8},
    {"Speex", "2150", 8000, Kind::Speex, 0, 160, 43, 0.82},
    {"Speex", "3950", 8000, Kind::Speex, 0, 160, 79, 0.85},
    {"Speex", "5950", 8000, Kind::Speex, 0, 160, 119, 0.85},
    {"Speex", "8000", 8000, Kind::Speex, 0, 160, 160, 0.85},
    {"Speex", "11000", 8000, Kind::Speex, 0, 160, 220, 0.85},
    {"Speex", "15000", 8000, Kind::Speex, 0, 160, 300, 0.85},
    {"Speex", "18200", 8000, Kind::Speex, 0, 160, 364, 0.85},
    {"Speex", "24600", 8000, Kind::Speex, 0, 160, 492, 0.85},
};

// The id each codec puts in header field 22 to know its own files.
const std::map<std::string, uint16_t> kCodecIds = {
    {"ImaAdpcm", 1}, {"MuLaw", 2}, {"Pcm", 3}, {"Codec2", 4}, {"Speex", 5}};

// The codec's first (highest) bit rate.
const Case& firstCase(const std::string& codec)
{
    return *std::find_if(kCases.begin(), kCases.end(), [&](const Case& k) { return k.codec == codec; });
}

// Energy of each 20 ms frame, in dB.
std::vector<double> envelopeDb(const std::vector<std::int16_t>& samples, int rate)
{
    const size_t frame = static_cast<size_t>(rate / 50);
    std::vector<double> out;
    for (size_t start = 0; start + frame <= samples.size(); start += frame) {
        double energy = 0;
        for (size_t i = start; i < start + frame; ++i)
            energy += double(samples[i]) * samples[i];
        out.push_back(10 * std::log10(energy / double(frame) + 1));
    }
    return out;
}

// Correlation of the two sounds' energy envelopes: 1 when loud and quiet
// passages follow the source exactly, near 0 for noise, 0 for silence.
double envelopeCorrelation(const std::vector<std::int16_t>& reference, const std::vector<std::int16_t>& decoded,
                           int rate)
{
    const std::vector<double> a = envelopeDb(reference, rate);
    const std::vector<double> b = envelopeDb(decoded, rate);
    const size_t n = std::min(a.size(), b.size());
    double meanA = 0, meanB = 0;
    for (size_t i = 0; i < n; ++i)
        meanA += a[i], meanB += b[i];
    meanA /= double(n), meanB /= double(n);
    double ab = 0, aa = 0, bb = 0;
    for (size_t i = 0; i < n; ++i) {
        ab += (a[i] - meanA) * (b[i] - meanB);
        aa += (a[i] - meanA) * (a[i] - meanA);
        bb += (b[i] - meanB) * (b[i] - meanB);
    }
    return aa > 0 && bb > 0 ? ab / std::sqrt(aa * bb) : 0.0;
}

double rmsDb(const std::vector<std::int16_t>& samples)
{
    double energy = 0;
    for (std::int16_t s : samples)
        energy += double(s) * s;
    return 10 * std::log10(energy / double(std::max<size_t>(samples.size(), 1)) + 1);
}

// The payload a frame codec must write for n samples: whole frames covering
// the sound, their bits back to back. Checks the size allows no padding per
// frame and gives the frame count.
void expectBitPackedFrames(size_t payloadBytes, size_t n, const Case& c)
{
    const size_t frames = payloadBytes * 8 / static_cast<size_t>(c.bitsPerFrame);
    EXPECT_EQ((frames * static_cast<size_t>(c.bitsPerFrame) + 7) / 8, payloadBytes) << "frames are padded";
    EXPECT_GE(frames * static_cast<size_t>(c.samplesPerFrame), n) << "frames do not cover the sound";
    EXPECT_LT(frames * static_cast<size_t>(c.samplesPerFrame), n + static_cast<size_t>(c.samplesPerFrame) + 400);
}

struct RoundTrip {
    std::filesystem::path encodedPath;
    std::string encoded;
    std::vector<std::int16_t> reference; // the source at the working rate
    std::vector<std::int16_t> decoded;
    std::string decodedBytes;
};

// Encodes and decodes `source` with the case's codec and bit rate, checking
// everything the two files promise on the way.
RoundTrip roundTrip(const Case& c, const std::string& source, const TempDir& dir)
{
    RoundTrip result;
    SCOPED_TRACE(c.codec + " " + c.bitRate + " on " + source);
    CodecDriver driver(c.codec);
    if (!driver.ready())
        return result;
    EXPECT_EQ(driver.configure(c.bitRate), 0u);
    EXPECT_EQ(driver.info().sample_rate, c.rate);
    EXPECT_EQ(driver.setEventFile({}), 0u);

    const auto encodedPath = dir / ("out." + driver.extension());
    const uint32_t code = driver.encode(kSpeechFolder / source, encodedPath);
    EXPECT_EQ(code, 0u) << driver.errorText(code);
    result.encoded = readBytes(encodedPath);

    // The source's duration at the working rate (the resampler's lengths are tested on their own).
    result.reference = speechAt(source, c.rate);
    const size_t n = result.reference.size();
    EXPECT_GT(n, 0u);

    const auto header = parseEncodedHeader(result.encoded);
    EXPECT_TRUE(header);
    if (!header)
        return result;
    EXPECT_EQ(header->formatCode, 2);
    EXPECT_EQ(header->field22, kCodecIds.at(c.codec));
    EXPECT_EQ(header->field24, 16);
    EXPECT_EQ(header->sampleRate, static_cast<uint32_t>(c.rate));
    EXPECT_EQ(header->field30, n);
    EXPECT_EQ(header->field36, 1);
    EXPECT_EQ(driver.fileValue(encodedPath), static_cast<int32_t>(n));

    // Header, an empty event block, then the payload and nothing else.
    const size_t payload = result.encoded.size() - kEncodedHeaderSize - 2;
    EXPECT_EQ(result.encoded.substr(kEncodedHeaderSize, 2), std::string(2, '\0'));
    if (c.kind == Kind::Waveform)
        EXPECT_EQ(payload, (n * static_cast<size_t>(c.bitsPerSample) + 7) / 8);
    else
        expectBitPackedFrames(payload, n, c);

    // Encoding again gives the same bytes.
    const auto againPath = dir / "again.bin";
    EXPECT_EQ(driver.encode(kSpeechFolder / source, againPath), 0u);
    EXPECT_TRUE(readBytes(againPath) == result.encoded) << "encoding is not repeatable";

    const auto wavePath = dir / "decoded.wav";
    const uint32_t decodeCode = driver.decode(encodedPath, wavePath);
    EXPECT_EQ(decodeCode, 0u) << driver.errorText(decodeCode);
    WaveFile decoded;
    EXPECT_TRUE(decoded.load(wavePath)) << decoded.error();
    EXPECT_EQ(decoded.sampleRate(), c.rate);
    EXPECT_EQ(decoded.channels(), 1);
    EXPECT_EQ(decoded.bitsPerSample(), 16);
    result.decoded = decoded.takeSamples();
    EXPECT_EQ(result.decoded.size(), n);
    result.decodedBytes = readBytes(wavePath);

    // Decoding again gives the same wave. Codec2's decoder draws the phases of
    // unvoiced sound from its library's process-wide generator, so for it only
    // the first decode after the library is loaded repeats (see the caller).
    if (c.kind != Kind::Codec2) {
        EXPECT_EQ(driver.decode(encodedPath, dir / "second.wav"), 0u);
        EXPECT_TRUE(readBytes(dir / "second.wav") == result.decodedBytes) << "decoding is not repeatable";
    }
    result.encodedPath = encodedPath;
    return result;
}

// How close a decode is to its source: segmental SNR for the waveform codecs,
// envelope correlation for the parametric ones.
double quality(const Case& c, const RoundTrip& trip)
{
    return c.kind == Kind::Waveform ? segmentalSnrDb(trip.reference, trip.decoded)
                                    : envelopeCorrelation(trip.reference, trip.decoded, c.rate);
}

} // namespace

TEST(ReferencePlugins, EveryBitRateRoundTripsRealSpeech)
{
    TempDir dir;
    for (const Case& c : kCases) {
        for (const std::string source : {"hts1a.wav", "wia_16kHz.wav"}) {
            const RoundTrip trip = roundTrip(c, source, dir);
            if (trip.decoded.empty())
                continue;
            SCOPED_TRACE(c.codec + " " + c.bitRate + " on " + source);
            EXPECT_GE(quality(c, trip), c.floor);
            if (c.kind == Kind::Codec2) {
                // The first decode after a fresh load of the plug-in (and so of
                // its library) repeats exactly.
                CodecDriver fresh(c.codec);
                EXPECT_EQ(fresh.configure(c.bitRate), 0u);
                EXPECT_EQ(fresh.decode(trip.encodedPath, dir / "fresh.wav"), 0u);
                EXPECT_TRUE(readBytes(dir / "fresh.wav") == trip.decodedBytes) << "decoding is not repeatable";
            }
            if (c.codec == "Pcm") {
                EXPECT_TRUE(trip.decoded == trip.reference) << "Pcm is not lossless";
            }
            // Neither much quieter nor much louder than the source.
            EXPECT_NEAR(rmsDb(trip.decoded), rmsDb(trip.reference), 6.0);
        }
    }
}

TEST(ReferencePlugins, SpeechEventsTravelInTheStreamAtTheWorkingRate)
{
    TempDir dir;
    // Events of the 16 kHz source: two at one position, one past the end.
    const SpeechEventList events = {{0, 1, false, "start"},
                                    {1601, 2, false, {}},
                                    {8000, 7, false, {}},
                                    {8000, 9, false, {}},
                                    {999999, 255, false, "late"}};
    ASSERT_TRUE(writeSpeechEvents(dir / "wia.evt", events, false, {}));
    for (const auto& [codec, bitRate, rate] : {std::tuple{"ImaAdpcm", "16000", 4000},
                                               {"MuLaw", "48000", 6000},
                                               {"Pcm", "256000", 16000},
                                               {"Codec2", "1300", 8000},
                                               {"Speex", "8000", 8000}}) {
        SCOPED_TRACE(codec);
        CodecDriver driver(codec);
        ASSERT_TRUE(driver.ready());
        ASSERT_EQ(driver.configure(bitRate), 0u);
        ASSERT_EQ(driver.encode(kSpeechFolder / "wia_16kHz.wav", dir / "plain.bin"), 0u);
        ASSERT_EQ(driver.setEventFile(dir / "wia.evt"), 0u);
        ASSERT_EQ(driver.encode(kSpeechFolder / "wia_16kHz.wav", dir / "events.bin"), 0u);
        const std::string plain = readBytes(dir / "plain.bin");
        const std::string withEvents = readBytes(dir / "events.bin");

        // Positions scaled from 16 kHz to the working rate, clamped into the
        // sound, in the order the event file reads back (of two events at one
        // position, the later one in the file comes first).
        const uint32_t last = static_cast<uint32_t>(rate) - 1; // wia lasts one second
        const std::vector<support::EncodedEvent> expected = {
            {0, 1},
            {static_cast<uint32_t>(std::lround(1601.0 * rate / 16000)), 2},
            {static_cast<uint32_t>(rate / 2), 9},
            {static_cast<uint32_t>(rate / 2), 7},
            {last, 255}};
        std::vector<support::EncodedEvent> read;
        const auto blockSize = support::readEventBlock(std::string_view(withEvents).substr(kEncodedHeaderSize), read);
        ASSERT_TRUE(blockSize);
        EXPECT_EQ(*blockSize, 2u + 5u * expected.size());
        EXPECT_EQ(read, expected);

        // Only the block differs: header and payload are those of the plain
        // encoding, and the decoded sound does not depend on the events.
        EXPECT_TRUE(withEvents.substr(0, kEncodedHeaderSize) == plain.substr(0, kEncodedHeaderSize));
        EXPECT_TRUE(withEvents.substr(kEncodedHeaderSize + *blockSize) == plain.substr(kEncodedHeaderSize + 2));
        if (std::string(codec) != "Codec2") {
            ASSERT_EQ(driver.decode(dir / "plain.bin", dir / "plain.wav"), 0u);
            ASSERT_EQ(driver.decode(dir / "events.bin", dir / "events.wav"), 0u);
            EXPECT_TRUE(readBytes(dir / "events.wav") == readBytes(dir / "plain.wav"));
        }

        // A source without an event file carries an empty block; an event file
        // that exists but cannot be read fails the encode.
        ASSERT_EQ(driver.setEventFile(dir / "none.evt"), 0u);
        ASSERT_EQ(driver.encode(kSpeechFolder / "wia_16kHz.wav", dir / "none.bin"), 0u);
        EXPECT_TRUE(readBytes(dir / "none.bin") == plain);
        std::filesystem::create_directory(dir / "folder.evt");
        ASSERT_EQ(driver.setEventFile(dir / "folder.evt"), 0u);
        const uint32_t code = driver.encode(kSpeechFolder / "wia_16kHz.wav", dir / "bad.bin");
        EXPECT_EQ(code, 0x8001u);
        EXPECT_EQ(driver.errorText(code), "folder.evt cannot be read as a speech event file !");
        std::filesystem::remove(dir / "folder.evt");
    }
}

TEST(ReferencePlugins, RefusesBadSettingsAndDamagedFilesWithATextAndNoOutput)
{
    TempDir dir;
    const auto source = kSpeechFolder / "hts1a.wav";
    for (const auto& [codec, id] : kCodecIds) {
        SCOPED_TRACE(codec);
        const Case& c = firstCase(codec);
        CodecDriver driver(codec);
        ASSERT_TRUE(driver.ready());

        // An unknown bit rate is refused when it is set.
        ASSERT_EQ(driver.set(KESTRELON_PARAM_BODY_FILE, utf8FromPath(driver.bodyFile())), 0u);
        const uint32_t refused = driver.set(KESTRELON_PARAM_BIT_RATE, "12345");
        EXPECT_EQ(refused, 0x8001u);
        EXPECT_EQ(driver.errorText(refused), "The bit rate 12345 is not offered by " + codec + " !");

        // Without a readable body file, or with another codec's, nothing is encoded.
        ASSERT_EQ(driver.configure(c.bitRate, dir / "missing.bdy"), 0u);
        uint32_t code = driver.encode(source, dir / "x.bin");
        EXPECT_EQ(code, 0x8001u);
        EXPECT_EQ(driver.errorText(code), "missing.bdy cannot be read as a codec body file !");
        const std::string other = codec == "Pcm" ? "MuLaw" : "Pcm";
        writeBytes(dir / "other.bdy", readBytes(kCodecDir / (other + ".bdy")));
        ASSERT_EQ(driver.configure(c.bitRate, dir / "other.bdy"), 0u);
        code = driver.encode(source, dir / "x.bin");
        EXPECT_EQ(driver.errorText(code), "other.bdy describes the codec " + other + ", not " + codec + " !");
        EXPECT_FALSE(std::filesystem::exists(dir / "x.bin"));

        // A source it cannot read.
        ASSERT_EQ(driver.configure(c.bitRate), 0u);
        code = driver.encode(dir / "none.wav", dir / "x.bin");
        EXPECT_EQ(driver.errorText(code), "none.wav does not exist !");
        EXPECT_FALSE(std::filesystem::exists(dir / "x.bin"));

        // Encoded files that are cut short, lengthened, altered or not its own.
        ASSERT_EQ(driver.encode(source, dir / "good.bin"), 0u);
        const std::string good = readBytes(dir / "good.bin");
        EXPECT_EQ(driver.fileValue(source), 0);
        std::string badBlock = good;
        badBlock[kEncodedHeaderSize] = 1; // one event claimed, none there
        // A sample count a second longer than the payload holds.
        EncodedHeaderFields fields = *parseEncodedHeader(good);
        fields.field30 += static_cast<uint32_t>(c.rate);
        const EncodedHeaderBytes longerHeader = makeEncodedHeader(fields);
        const std::string longer =
            std::string(longerHeader.begin(), longerHeader.end()) + good.substr(kEncodedHeaderSize);
        const std::string notOurs = readBytes(dir / "good.bin").replace(22, 1, 1, char(99));
        const std::string isDamaged = " is damaged: its encoded data is incomplete or altered !";
        const std::vector<std::pair<std::string, std::string>> damaged = {
            {good.substr(0, good.size() - 1), isDamaged},
            {good + '\0', isDamaged},
            {badBlock, isDamaged},
            {longer, isDamaged},
            {good.substr(0, kEncodedHeaderSize), isDamaged},
            {good.substr(0, 20), " is not a correct encoded file !"},
            {readBytes(source), " is not a correct encoded file !"},
            {notOurs, " was not encoded by " + codec + " !"},
        };
        for (const auto& [bytes, message] : damaged) {
            std::filesystem::remove(dir / "bad.wav");
            writeBytes(dir / "bad.bin", bytes);
            code = driver.decode(dir / "bad.bin", dir / "bad.wav");
            EXPECT_EQ(code, 0x8001u);
            EXPECT_EQ(driver.errorText(code), "bad.bin" + message);
            EXPECT_FALSE(std::filesystem::exists(dir / "bad.wav"));
        }

        // Random bits of the right size: a decoder may make sound of them or
        // refuse them, but never crashes or returns a sound of the wrong length.
        std::mt19937 random(11);
        std::string noise = good;
        for (size_t i = kEncodedHeaderSize + 2; i < noise.size(); ++i)
            noise[i] = static_cast<char>(random());
        writeBytes(dir / "noise.bin", noise);
        code = driver.decode(dir / "noise.bin", dir / "noise.wav");
        if (code == 0) {
            WaveFile wave;
            ASSERT_TRUE(wave.load(dir / "noise.wav"));
            EXPECT_EQ(wave.frameCount(), static_cast<int64_t>(parseEncodedHeader(good)->field30));
        } else {
            EXPECT_EQ(driver.errorText(code), "noise.bin" + isDamaged);
        }
    }
}

TEST(ReferencePlugins, DescribeThemselvesAndReportProgress)
{
    TempDir dir;
    const std::map<std::string, std::tuple<std::string, std::string, int, int>> expected = {
        {"ImaAdpcm", {"adp", "adpcm", 16000, 32000}},
        {"MuLaw", {"ulw", "ulaw", 48000, 64000}},
        {"Pcm", {"pcm", "pcm", 128000, 256000}},
        {"Codec2", {"c2", "codec2", 450, 3200}},
        {"Speex", {"spx", "speex", 2150, 24600}}};
    for (const auto& [codec, facts] : expected) {
        SCOPED_TRACE(codec);
        const auto& [extension, tag, lowest, highest] = facts;
        CodecDriver driver(codec);
        ASSERT_TRUE(driver.ready());
        // Described before any bit rate is chosen, as the algorithm listing does.
        ASSERT_EQ(driver.set(KESTRELON_PARAM_BODY_FILE, utf8FromPath(driver.bodyFile())), 0u);
        EXPECT_EQ(driver.version(), 0x10000u);
        EXPECT_FALSE(driver.description().empty());
        EXPECT_EQ(driver.extension(), extension);
        EXPECT_EQ(driver.tag(), tag);
        const auto [sampleRates, bitRates] = driver.ranges();
        EXPECT_EQ(std::tuple(sampleRates.low, sampleRates.high, bitRates.low, bitRates.high),
                  std::tuple(4000, 48000, lowest, highest));
        const kestrelon_codec_info info = driver.info();
        EXPECT_EQ(std::pair(info.resolution_bits, info.channels), std::pair(16, 1));

        // The bar runs over 0..100, forward only, to the end; every step is
        // told to the main window with the message number it was given.
        ASSERT_EQ(driver.configure(firstCase(codec).bitRate), 0u);
        for (const bool encoding : {true, false}) {
            driver.bar() = {};
            driver.mainWindow() = {};
            ASSERT_EQ(encoding ? driver.encode(kSpeechFolder / "hts1a.wav", dir / "p.bin")
                               : driver.decode(dir / "p.bin", dir / "p.wav"),
                      0u);
            EXPECT_EQ(driver.bar().ranges, (std::vector<std::pair<int, int>>{{0, 100}}));
            ASSERT_FALSE(driver.bar().positions.empty());
            EXPECT_TRUE(std::is_sorted(driver.bar().positions.begin(), driver.bar().positions.end()));
            EXPECT_EQ(driver.bar().positions.back(), 100);
            EXPECT_GE(driver.mainWindow().messages.size(), 2u);
            EXPECT_EQ(driver.mainWindow().messages, std::vector<uint32_t>(driver.mainWindow().messages.size(), 0x403u));
        }
    }
}

TEST(ReferencePlugins, BodyFileNarrowsTheOfferAndIsChecked)
{
    TempDir dir;
    const std::string narrow = "[CODEC]\nNAME=ImaAdpcm\nSAMPLERATE_MIN=8000\nSAMPLERATE_MAX=8000\n"
                               "BITRATECOUNT=1\nBITRATE0=24000\nWORKRATE0=6000\n";
    writeBytes(dir / "narrow.bdy", narrow);
    CodecDriver driver("ImaAdpcm");
    ASSERT_TRUE(driver.ready());
    ASSERT_EQ(driver.set(KESTRELON_PARAM_BODY_FILE, utf8FromPath(dir / "narrow.bdy")), 0u);
    EXPECT_EQ(driver.checkAlgorithm(), 0u);

    // A bit rate the codec knows but this body does not offer is refused.
    uint32_t code = driver.set(KESTRELON_PARAM_BIT_RATE, "32000");
    EXPECT_EQ(code, 0x8001u);
    EXPECT_EQ(driver.errorText(code), "The bit rate 32000 is not offered by ImaAdpcm !");
    ASSERT_EQ(driver.set(KESTRELON_PARAM_BIT_RATE, "24000"), 0u);
    EXPECT_EQ(driver.info().sample_rate, 6000);
    const auto [sampleRates, bitRates] = driver.ranges();
    EXPECT_EQ(std::pair(sampleRates.low, sampleRates.high), std::pair(8000, 8000));
    EXPECT_EQ(std::pair(bitRates.low, bitRates.high), std::pair(24000, 24000));

    // Only sources at the rates it accepts.
    EXPECT_EQ(driver.encode(kSpeechFolder / "hts1a.wav", dir / "ok.adp"), 0u);
    code = driver.encode(kSpeechFolder / "wia_16kHz.wav", dir / "no.adp");
    EXPECT_EQ(driver.errorText(code), "wia_16kHz.wav has a sample rate that ImaAdpcm does not accept !");
    EXPECT_FALSE(std::filesystem::exists(dir / "no.adp"));

    // A body file that does not fit the codec: parameter 0 is taken, but the
    // codec says what is wrong when checked and when asked to encode.
    const std::vector<std::pair<std::string, std::string>> broken = {
        {"WORKRATE0=6000", "WORKRATE0=8000"}, {"BITRATE0=24000", "BITRATE0=12345"},
        {"BITRATECOUNT=1", "BITRATECOUNT=x"}, {"SAMPLERATE_MAX=8000", "SAMPLERATE_MAX=100"},
        {"NAME=ImaAdpcm", "NAME="},
    };
    for (const auto& [good, bad] : broken) {
        std::string text = narrow;
        text.replace(text.find(good), good.size(), bad);
        writeBytes(dir / "broken.bdy", text);
        ASSERT_EQ(driver.set(KESTRELON_PARAM_BODY_FILE, utf8FromPath(dir / "broken.bdy")), 0u);
        const std::string expected = "broken.bdy has no valid " + bad.substr(0, bad.find('=')) + " !";
        code = driver.checkAlgorithm();
        EXPECT_EQ(code, 0x8001u);
        EXPECT_EQ(driver.errorText(code), expected);
        EXPECT_EQ(driver.errorText(driver.encode(kSpeechFolder / "hts1a.wav", dir / "x.adp")), expected);
    }
    EXPECT_FALSE(std::filesystem::exists(dir / "x.adp"));
}
