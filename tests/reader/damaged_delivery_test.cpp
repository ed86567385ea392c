/// Streams with foreign bytes in them, and files that change while they are open.
#include "reader/engine.h"
#include "reader/reader_streams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

using namespace trnmpa;
using test::Bytes;
using test::Engine;

namespace {

class DamagedDelivery : public testing::Test {
protected:
    test::Pcm Expected(std::int64_t start, std::int64_t count) const {
        return test::Pcm(whole_.begin() + 2 * start, whole_.begin() + 2 * (start + count));
    }

    /// The stream with `bytes` before its frame number `frame`.
    Bytes With(const Bytes& bytes, std::size_t frame) const {
        const auto place = stream_.bytes.begin() + static_cast<std::ptrdiff_t>(stream_.frames[frame].offset);
        return test::Joined({Bytes(stream_.bytes.begin(), place), bytes, Bytes(place, stream_.bytes.end())});
    }

    test::Pcm AllOf(const Bytes& file) {
        Engine engine(folder_.Add("stream.mp3", file));
        EXPECT_EQ(engine.Opened(), kSuccess);
        return engine.Read(0, static_cast<std::uint32_t>(whole_.size() / 2));
    }

    test::ScratchFolder folder_;
    const test::bitstream::Stream stream_ = test::SteadyStream(200);
    const test::Pcm whole_ = test::DeliveredFrom(stream_, 0, test::kDecoderDelay);
    const std::int64_t samples_ = static_cast<std::int64_t>(whole_.size() / 2);
};

} // namespace

TEST_F(DamagedDelivery, BytesBetweenFramesAreSteppedOver) {
    EXPECT_EQ(AllOf(With(Bytes(1, 0), 7)), whole_);
    EXPECT_EQ(AllOf(With(Bytes(100000, 0), 7)), whole_);
    EXPECT_EQ(AllOf(With(Bytes(1000, 0xFF), 7)), whole_);
}

TEST_F(DamagedDelivery, FramesOfAnotherFormatAreSteppedOver) {
    // Single channel, other rate, layer II; their bodies are zeros.
    for (const Bytes& header :
         {Bytes{0xFF, 0xFB, 0x90, 0xC0}, Bytes{0xFF, 0xFB, 0x94, 0}, Bytes{0xFF, 0xFD, 0x90, 0}}) {
        Bytes frame = header;
        frame.resize(417);
        EXPECT_EQ(AllOf(With(frame, 7)), whole_) << int{header[1]} << ' ' << int{header[3]};
    }
}

TEST_F(DamagedDelivery, NothingButAnotherFormatBehindTheFirstFrameIsTheEnd) {
    Bytes foreign = {0xFF, 0xFB, 0x90, 0xC0};
    foreign.resize(417);
    Bytes file(stream_.bytes.begin(), stream_.bytes.begin() + 417);
    for (int i = 0; i < 100; ++i)
        file.insert(file.end(), foreign.begin(), foreign.end());
    Engine engine(folder_.Add("stream.mp3", file));
    ASSERT_EQ(engine.Opened(), kSuccess);
    EXPECT_EQ(engine.Read(0, 52), Expected(0, 52));
    EXPECT_EQ(engine.Read(0, 53), test::Pcm(106, 0));
    EXPECT_EQ(engine.Read(5000, 53), test::Pcm(106, 0));
    EXPECT_EQ(engine.Read(10, 42), Expected(10, 42));
}

TEST_F(DamagedDelivery, ACutLastFrameIsTheEnd) {
    for (const std::ptrdiff_t cut : {1, 100, 400, 414, 416}) {
        Engine engine(folder_.Add("stream.mp3", Bytes(stream_.bytes.begin(), stream_.bytes.end() - cut)));
        const std::int64_t end = samples_ - 1152;
        EXPECT_EQ(engine.Read(end, 1), test::Pcm(2, 0)) << cut;
        EXPECT_EQ(engine.Read(end - 700, 700), Expected(end - 700, 700)) << cut;
        EXPECT_EQ(engine.Read(end - 700, 701), test::Pcm(2 * 701, 0)) << cut;
        EXPECT_EQ(engine.Read(end - 700, 700), Expected(end - 700, 700)) << cut;
    }
}

TEST_F(DamagedDelivery, ACutInsideTheCrcWordIsAFault) {
    test::bitstream::StreamOptions options = test::SteadyOptions();
    options.crc = true;
    const auto stream = test::bitstream::WriteStream(options);
    const test::Pcm whole = test::DeliveredFrom(stream, 0, test::kDecoderDelay);
    const auto last = static_cast<std::ptrdiff_t>(stream.frames.back().offset);
    const std::int64_t end = 19 * 1152 - 1100;
    for (const std::ptrdiff_t kept : {4, 5}) {
        Engine engine(
            folder_.Add("stream.mp3", Bytes(stream.bytes.begin(), stream.bytes.begin() + last + kept)));
        EXPECT_EQ(engine.Ask(end - 10, 11).result, kUnexpectedException) << kept;
        EXPECT_EQ(engine.Read(end - 10, 10),
                  test::Pcm(whole.begin() + 2 * (end - 10), whole.begin() + 2 * end));
        EXPECT_EQ(engine.Ask(end, 1).result, kUnexpectedException) << kept;
        EXPECT_EQ(engine.Read(52, 700), test::Pcm(whole.begin() + 104, whole.begin() + 1504));
    }
    Engine engine;
    EXPECT_EQ(engine.Open(folder_.Add("stream.mp3", Bytes(stream.bytes.begin(), stream.bytes.begin() + 5))),
              kOpenFailed);
}

TEST_F(DamagedDelivery, BytesBehindTheLastFrameAreNoFrame) {
    Bytes file = stream_.bytes;
    file.insert(file.end(), 128, 0);
    std::copy_n("TAG", 3, file.end() - 128);
    Engine engine(folder_.Add("stream.mp3", file));
    EXPECT_EQ(engine.Read(samples_ - 10, 10), Expected(samples_ - 10, 10));
    EXPECT_EQ(engine.Read(samples_ - 10, 11), test::Pcm(22, 0));
    EXPECT_EQ(engine.Read(samples_ - 10, 10), Expected(samples_ - 10, 10));
}

TEST_F(DamagedDelivery, AFileThatShrinksEndsEarlier) {
    const auto path = folder_.Add("stream.mp3", stream_.bytes);
    Engine engine(path);
    ASSERT_EQ(engine.Read(0, 2000), Expected(0, 2000));
    std::filesystem::resize_file(path, 100 * 417);
    EXPECT_EQ(engine.Read(190 * 1152, 2000), test::Pcm(4000, 0));
    EXPECT_EQ(engine.Read(5000, 2000), Expected(5000, 2000));
    std::filesystem::resize_file(path, 0);
    EXPECT_EQ(engine.Read(190 * 1152, 2000), test::Pcm(4000, 0));
    EXPECT_EQ(engine.Ask(0, 2000).result, kSuccess);
    test::WriteFile(path, stream_.bytes);
    EXPECT_EQ(engine.Read(190 * 1152, 2000), Expected(190 * 1152, 2000));
    EXPECT_EQ(engine.Read(5000, 2000), Expected(5000, 2000));
}

TEST_F(DamagedDelivery, WhereTheFileEndedIsLookedUpAgain) {
    const auto path =
        folder_.Add("stream.mp3", Bytes(stream_.bytes.begin(), stream_.bytes.begin() + 180 * 417 + 200));
    const std::int64_t end = 180 * 1152 - 1100;
    Engine engine(path);
    ASSERT_EQ(engine.Read(end - 3000, 3000), Expected(end - 3000, 3000));
    EXPECT_EQ(engine.Read(end, 1), test::Pcm(2, 0));
    test::WriteFile(path, stream_.bytes);
    EXPECT_EQ(engine.Read(end, 1152), Expected(end, 1152));
}

TEST_F(DamagedDelivery, WhatIsHeldIsNotReadAgain) {
    const auto path = folder_.Add("stream.mp3", stream_.bytes);
    Engine engine(path);
    ASSERT_EQ(engine.Read(150 * 1152, 1), Expected(150 * 1152, 1));
    std::filesystem::resize_file(path, 0);
    // Frame 150 holds the samples from 150 * 1152 - 1100 on.
    EXPECT_EQ(engine.Read(150 * 1152 + 1, 51), Expected(150 * 1152 + 1, 51));
    EXPECT_EQ(engine.Read(150 * 1152 - 1000, 1000), Expected(150 * 1152 - 1000, 1000));
    EXPECT_EQ(engine.Read(100 * 1152, 10), test::Pcm(20, 0)) << "this would have to be read";
}

TEST_F(DamagedDelivery, RequestsInOrderDoNotReposition) {
    const auto path = folder_.Add("stream.mp3", stream_.bytes);
    Engine engine(path);
    ASSERT_EQ(engine.Read(0, 1000), Expected(0, 1000));
    // What the engine's block of the file holds can still be read, but no position in it can be found again.
    std::filesystem::resize_file(path, 0);
    EXPECT_EQ(engine.Read(1000, 1000), Expected(1000, 1000));
    EXPECT_EQ(engine.Read(2000, 5000), Expected(2000, 5000));
    EXPECT_EQ(engine.Read(6000, 10), test::Pcm(20, 0)) << "out of order";
}
