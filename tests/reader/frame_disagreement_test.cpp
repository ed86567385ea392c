/// Files in which the index builder and the decoder see different frames: what the index lists, what a read
/// from the start brings and where a jump lands.
#include "reader/engine.h"
#include "reader/expected_stream.h"
#include "reader/foreign_bytes.h"
#include "reader/preroll.h"
#include "reader/reader_streams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace trnmpa;
using test::Bytes;
using test::Engine;
using test::bitstream::Stream;
using test::bitstream::StreamOptions;
using test::bitstream::Version;

namespace {

/// One file; `frames` of it are those that the decoder takes.
class FrameDisagreement : public testing::Test {
protected:
    void Index(const Stream& file) {
        file_ = file;
        path_ = folder_.Add("stream.mp3", file.bytes);
        const Bytes index = test::BuildIndex(path_);
        header_ = ParseIndexHeader(std::span(index).first<kIndexHeaderBytes>());
        entries_.clear();
        for (std::size_t at = kIndexHeaderBytes; at < index.size(); at += kIndexEntryBytes)
            entries_.push_back(ParseIndexEntry(std::span(index).subspan(at).first<kIndexEntryBytes>()));
        ASSERT_EQ(header_.frameCount, entries_.size());
        whole_ = test::Delivered(test::FramesAlone(file, 1), 0);
        frameValues_ = whole_.size() / (file.frames.size() - 1);
    }

    std::size_t DecodedFrames() const { return file_.frames.size() - 1; }
    std::int64_t FrameSamples() const {
        return static_cast<std::int64_t>(frameValues_) / file_.frames.front().header.channels;
    }

    test::Pcm FramePcm(std::size_t frame) const {
        if (frame >= DecodedFrames())
            return test::Pcm(frameValues_, 0);
        const auto first = whole_.begin() + static_cast<std::ptrdiff_t>(frame * frameValues_);
        return test::Pcm(first, first + static_cast<std::ptrdiff_t>(frameValues_));
    }

    /// Read in order, the file brings every frame that the decoder takes.
    void ExpectAllFramesInOrder() {
        Engine engine(path_);
        ASSERT_EQ(engine.Opened(), kSuccess);
        for (std::size_t frame = 0; frame <= DecodedFrames(); ++frame)
            ASSERT_EQ(engine.Read(static_cast<std::int64_t>(frame) * FrameSamples(),
                                  static_cast<std::uint32_t>(FrameSamples())),
                      FramePcm(frame))
                << frame;
    }

    /// The frame that a jump to an entry brings: one after another is taken from where the pre-roll begins.
    std::size_t JumpTarget(std::size_t entry) const {
        AMPFrameInfo stream;
        stream.layer = header_.layer;
        stream.version = header_.version;
        stream.stereo = header_.channels == 2 ? 1 : 0;
        Preroll preroll;
        const auto target = static_cast<std::int64_t>(entry);
        const auto start = static_cast<std::size_t>(PrerollStart(stream, entries_, target, preroll));
        const auto first =
            std::ranges::find_if(file_.frames.begin() + 1, file_.frames.end(), [&](const auto& frame) {
                return frame.offset >= entries_[start].frameOffset;
            });
        return static_cast<std::size_t>(first - file_.frames.begin()) - 1 + entry - start;
    }

    test::Pcm Jump(std::size_t entry) const {
        Engine engine(path_);
        return engine.Read(static_cast<std::int64_t>(entry) * FrameSamples(),
                           static_cast<std::uint32_t>(FrameSamples()));
    }

    /// Jumps land where JumpTarget says; gives the first entry whose jump brings another frame than a read in
    /// order does at that position, or the number of entries.
    std::size_t FirstShiftedJump() {
        std::size_t shifted = entries_.size();
        for (std::size_t entry = 0; entry < entries_.size(); ++entry) {
            const std::size_t target = JumpTarget(entry);
            EXPECT_EQ(Jump(entry), FramePcm(target)) << entry << " to " << target;
            if (target != entry)
                shifted = std::min(shifted, entry);
        }
        return shifted;
    }

    bool Lists(std::size_t frame) const {
        return std::ranges::count(entries_, file_.frames[frame].offset, &MpaIndexEntry::frameOffset) == 1;
    }

    test::ScratchFolder folder_;
    std::filesystem::path path_;
    Stream file_;
    MpaIndexHeader header_;
    std::vector<MpaIndexEntry> entries_;
    test::Pcm whole_;
    std::size_t frameValues_ = 0;
};

StreamOptions Layer2Options(int mode) {
    StreamOptions options;
    options.seed = 5;
    options.frames = 20;
    options.layer = 2;
    options.bitrateIndices = {8};
    options.mode = mode;
    return options;
}

Bytes FrameOf(const Stream& stream, std::size_t frame) {
    const auto first = stream.bytes.begin() + static_cast<std::ptrdiff_t>(stream.frames[frame].offset);
    return Bytes(first, first + stream.frames[frame].length);
}

/// Layer III header at 48000 Hz, which no decoder takes that began at 44100 Hz; 128 kbit/s, so 384 bytes.
const Bytes kForeignHeader = {0xFF, 0xFB, 0x94, 0x00};
constexpr std::uint32_t kForeignLength = 384;

StreamOptions LowRateLayer2Options(std::uint64_t seed) {
    StreamOptions options;
    options.seed = seed;
    options.frames = 20;
    options.version = Version::kMpeg2;
    options.layer = 2;
    options.sampleRateIndex = 1;
    options.bitrateIndices = {8};
    return options;
}
constexpr std::uint32_t kLowRateFrameBytes = 384;

} // namespace

// The builder lists the frame of one channel, the decoder passes over it: behind it an entry's number is one
// higher than the number of the frame in a read from the start.
TEST_F(FrameDisagreement, MonoAmongStereoIsListedAndPassedOver) {
    const Stream stereo = test::bitstream::WriteStream(Layer2Options(test::model::kStereo));
    const Stream mono = test::bitstream::WriteStream(Layer2Options(test::model::kSingleChannel));
    Index(test::WithBytesBefore(stereo, 6, FrameOf(mono, 3)));
    EXPECT_EQ(entries_.size(), 20u) << "nineteen of stereo and one of mono";
    EXPECT_EQ(entries_[5].frameOffset,
              file_.frames[5].offset + static_cast<unsigned>(file_.frames[5].length));
    ExpectAllFramesInOrder();
    EXPECT_EQ(FirstShiftedJump(), 7u);
    EXPECT_EQ(JumpTarget(6), 6u) << "the pre-roll begins in the frame that is passed over";
    EXPECT_EQ(JumpTarget(7), 6u);
    EXPECT_EQ(JumpTarget(19), 18u) << "the last entry is the last frame, which in order stands at 18";
}

// The first frame alone says how wide a sample is, the frames behind it how they sound.
TEST_F(FrameDisagreement, AMonoFrameInFrontOfStereoSetsTheWidth) {
    const Stream stereo = test::bitstream::WriteStream(Layer2Options(test::model::kStereo));
    const Stream mono = test::bitstream::WriteStream(Layer2Options(test::model::kSingleChannel));
    path_ = folder_.Add("stream.mp2", test::Joined({FrameOf(mono, 0), stereo.bytes}));
    test::BuildIndex(path_);
    Engine engine(path_);
    ASSERT_EQ(engine.Opened(), kSuccess);
    EXPECT_EQ(engine.Format().nChannels, 1);
    EXPECT_EQ(engine.Format().nBlockAlign, 2);
    const test::Pcm pcm = test::Delivered(stereo.bytes, 0);
    EXPECT_EQ(engine.Read(1000, 5000), test::Pcm(pcm.begin() + 1000, pcm.begin() + 6000))
        << "interleaved stereo";
}

TEST_F(FrameDisagreement, ForeignHeaderTakesThePlaceOfTheFrameBehindIt) {
    Index(test::WithBytesBefore(test::SteadyStream(), 8, kForeignHeader));
    ASSERT_EQ(entries_.size(), 19u);
    EXPECT_EQ(entries_[7], (MpaIndexEntry{8 * 417, kForeignLength}));
    EXPECT_FALSE(Lists(8));
    EXPECT_TRUE(Lists(9));
    ExpectAllFramesInOrder();
    EXPECT_EQ(FirstShiftedJump(), 19u) << "as many entries as frames: every jump is right";
}

TEST_F(FrameDisagreement, ForeignFrameIsListedAndPassedOver) {
    std::mt19937_64 random(1);
    Index(test::WithBytesBefore(test::SteadyStream(), 8,
                                test::Joined({kForeignHeader, test::Junk(kForeignLength, random, false)})));
    ASSERT_EQ(entries_.size(), 20u);
    EXPECT_EQ(entries_[7], (MpaIndexEntry{8 * 417, kForeignLength}));
    EXPECT_TRUE(Lists(8));
    ExpectAllFramesInOrder();
    EXPECT_EQ(FirstShiftedJump(), 11u) << "three frames of pre-roll behind the foreign one";
    EXPECT_EQ(JumpTarget(11), 10u);
}

// Junk that the decoder takes for a frame is one to the builder as well.
TEST_F(FrameDisagreement, JunkLikeAFrameIsAFrameToBoth) {
    Bytes header = FrameOf(test::SteadyStream(), 0);
    header.resize(4);
    path_ = folder_.Add("stream.mp3", test::WithBytesBefore(test::SteadyStream(), 8, header).bytes);
    EXPECT_EQ(test::BuildIndex(path_).size(), 28u + 19 * 8) << "in place of the frame behind it";
    Engine inOrder(path_);
    for (std::int64_t entry = 0; entry < 19; ++entry) {
        Engine jump(path_);
        EXPECT_EQ(jump.Read(entry * 1152, 1152), inOrder.Read(entry * 1152, 1152)) << entry;
    }
}

// Over more than 4096 bytes only the decoder goes on.
TEST_F(FrameDisagreement, TheIndexEndsAtMuchJunk) {
    std::mt19937_64 random(2);
    Index(test::WithBytesBefore(test::SteadyStream(), 8, test::Junk(4200, random, false)));
    EXPECT_EQ(entries_.size(), 7u);
    ExpectAllFramesInOrder();
    EXPECT_EQ(FirstShiftedJump(), 7u);
    EXPECT_EQ(Jump(9), FramePcm(9)) << "its pre-roll begins at the last entry";
    EXPECT_EQ(Jump(10), test::Pcm(2 * 1152, 0)) << "farther behind the index a jump brings silence";
    Engine engine(path_);
    EXPECT_EQ(engine.Read(6 * 1152, 1152), FramePcm(6));
    for (std::size_t frame = 7; frame < DecodedFrames(); ++frame)
        EXPECT_EQ(engine.Read(static_cast<std::int64_t>(frame) * 1152, 1152), FramePcm(frame))
            << "a read that goes on brings the frames";
}

// In MPEG 2.5 the builder's search can step over the header that follows a wrong byte closely.
TEST_F(FrameDisagreement, ShortJunkInMpeg25HidesAFrameFromTheIndex) {
    StreamOptions options = test::SteadyOptions();
    options.version = Version::kMpeg25;
    const Stream stream = test::bitstream::WriteStream(options);
    for (const std::size_t bytes : {1u, 2u, 5u, 10u}) {
        SCOPED_TRACE(bytes);
        Index(test::WithBytesBefore(stream, 8, Bytes(bytes, 0x55)));
        EXPECT_TRUE(Lists(7));
        EXPECT_FALSE(Lists(8));
        EXPECT_LT(entries_.size(), 19u);
        ExpectAllFramesInOrder();
        const std::size_t shifted = FirstShiftedJump();
        EXPECT_GE(shifted, 7u);
        EXPECT_LT(shifted, entries_.size());
    }
    for (const std::size_t bytes : {3u, 4u, 8u}) {
        SCOPED_TRACE(bytes);
        Index(test::WithBytesBefore(stream, 8, Bytes(bytes, 0x55)));
        EXPECT_EQ(entries_.size(), 19u);
        EXPECT_EQ(FirstShiftedJump(), 19u);
    }
}

TEST_F(FrameDisagreement, AByteFFInJunkOfMpeg25HidesAFrameFromTheIndex) {
    StreamOptions options = test::SteadyOptions();
    options.version = Version::kMpeg25;
    Index(test::WithBytesBefore(test::bitstream::WriteStream(options), 8, {0, 0, 0, 0xFF, 0, 0, 0, 0}));
    EXPECT_FALSE(Lists(8));
    ExpectAllFramesInOrder();
    EXPECT_LT(FirstShiftedJump(), entries_.size());
}

// The builder measures these frames at half their length and searches the second half for the next header.
TEST_F(FrameDisagreement, LowRateLayer2IsListedAtHalfItsLength) {
    for (std::uint64_t seed = 1; entries_.size() != 19 && seed < 50; ++seed)
        Index(test::bitstream::WriteStream(LowRateLayer2Options(seed)));
    ASSERT_EQ(entries_.size(), 19u) << "no stream without a header inside a frame";
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        EXPECT_EQ(entries_[i].frameOffset, (i + 1) * kLowRateFrameBytes);
        EXPECT_EQ(entries_[i].frameBytes, kLowRateFrameBytes / 2);
    }
    ExpectAllFramesInOrder();
    EXPECT_EQ(FirstShiftedJump(), 19u);
}

TEST_F(FrameDisagreement, WhatLooksLikeAHeaderInLowRateLayer2IsListedForAFrame) {
    for (std::uint64_t seed = 1; entries_.size() != 19 && seed < 50; ++seed)
        Index(test::bitstream::WriteStream(LowRateLayer2Options(seed)));
    ASSERT_EQ(entries_.size(), 19u);
    Stream stream = file_;
    constexpr std::uint32_t kPlace = 6 * kLowRateFrameBytes + 288;
    std::copy_n(stream.bytes.begin(), 4, stream.bytes.begin() + kPlace);
    Index(stream);
    ASSERT_EQ(entries_.size(), 19u);
    EXPECT_TRUE(Lists(6));
    EXPECT_EQ(entries_[6], (MpaIndexEntry{kPlace, kLowRateFrameBytes / 2}));
    EXPECT_FALSE(Lists(7)) << "the header of frame 7 lies within what is measured from there";
    ExpectAllFramesInOrder();
    for (std::size_t entry = 0; entry < entries_.size(); ++entry) {
        const bool isHit = entry == 7;
        EXPECT_EQ(Jump(entry) == FramePcm(entry), !isHit)
            << entry << ": the jump that starts at the wrong place goes wrong";
    }
}
