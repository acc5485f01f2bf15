#include "protocol.h"

#include <gtest/gtest.h>

#include <random>

using namespace kestrelon::board;

TEST(BoardProtocol, FramesSurviveSplittingAndNoDamagedFrameIsEverTaken)
{
    std::mt19937 random(3);
    std::vector<Frame> sent;
    std::string line = "noise before";
    for (int i = 0; i < 200; ++i) {
        std::string payload(std::size_t(random() % 300), '\0');
        for (char& c : payload)
            c = char(random());
        sent.push_back({FrameType::Data, std::uint8_t(i), payload});
        line += encodeFrame(sent.back());
    }
    // Whole, in pieces of any size.
    FrameParser parser;
    std::vector<Frame> got;
    for (std::size_t at = 0; at < line.size();) {
        const std::size_t piece = std::min<std::size_t>(line.size() - at, 1 + random() % 97);
        parser.feed(std::string_view(line).substr(at, piece));
        at += piece;
        while (std::optional<Frame> frame = parser.next())
            got.push_back(*frame);
    }
    ASSERT_EQ(got.size(), sent.size());
    for (std::size_t i = 0; i < sent.size(); ++i) {
        EXPECT_EQ(got[i].sequence, sent[i].sequence);
        EXPECT_EQ(got[i].payload, sent[i].payload);
    }

    // Damaged: any frame taken is one that was sent, byte for byte; a
    // truncated last frame is never taken.
    std::string noisy = line.substr(0, line.size() - 3);
    for (char& c : noisy)
        if (random() % 100 == 0)
            c = char(c ^ (1 << (random() % 8)));
    FrameParser damaged;
    damaged.feed(noisy);
    int taken = 0;
    while (std::optional<Frame> frame = damaged.next()) {
        ++taken;
        bool known = false;
        for (const Frame& original : sent)
            known = known || (original.sequence == frame->sequence && original.payload == frame->payload);
        EXPECT_TRUE(known) << "a damaged frame was taken as data";
    }
    EXPECT_LT(taken, int(sent.size()));
    EXPECT_GT(damaged.rejected(), 0u);
}
