/// Real files with ID3v2 tags, encoders' tag frames and foreign bytes.

#include "real/delivery.h"
#include "real/real_streams.h"
#include "support/loaded_module.h"
#include "support/test_files.h"

#include "trnmediadet/media_info.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace {

using namespace test;

constexpr std::uint8_t kUnsynchronised = 0x80;

/// An ID3v2.4 tag that claims `claimedBytes` behind its header, whatever `body` holds.
Bytes Tag(const Bytes& body, std::size_t claimedBytes, std::uint8_t flags = 0) {
    Bytes tag = {'I', 'D', '3', 4, 0, flags};
    for (const int shift : {21, 14, 7, 0})
        tag.push_back(static_cast<std::uint8_t>(claimedBytes >> shift & 127));
    tag.insert(tag.end(), body.begin(), body.end());
    return tag;
}

Bytes Tag(const Bytes& body) {
    return Tag(body, body.size());
}

/// Bytes in which nothing looks like the start of a frame.
Bytes Garbage(std::size_t size) {
    std::mt19937 generator(7);
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(generator() % 0x80);
    return bytes;
}

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

class RealTag : public testing::Test {
protected:
    LoadedModule module_;
    ScratchFolder scratch_;
    const RealStream& stream_ = RealStreamNamed("cbr-44-160.mp3");
    const Bytes clean_ = ReadFile(stream_.Path());
    const Pcm pcm_ = Deliver(stream_.Path(), stream_.DeliveredSamples());

    Pcm Deliver(const std::filesystem::path& path, std::int64_t samples) {
        const auto reader = module_.OpenForReading(path);
        EXPECT_NE(reader, nullptr);
        return reader != nullptr ? ReadThrough(*reader, samples, 44'100) : Pcm();
    }

    Pcm Deliver(const Bytes& file) {
        return Deliver(scratch_.Add("file.mp3", file), stream_.DeliveredSamples());
    }

    std::int32_t Open(const Bytes& file, std::uint32_t flags) {
        return module_.CreateReader()->OpenFile(Wide(scratch_.Add("file.mp3", file)), flags);
    }

    /// The probe's duration in seconds; negative when it describes nothing.
    double Duration(const Bytes& file) {
        const auto reader = module_.CreateReader();
        TRN_MEDIA_INFO2 info;
        if (reader->OpenFile(Wide(scratch_.Add("file.mp3", file)), TRN_OPEN_PROBE) != 1 ||
            reader->GetFileInfo(TRN_FILE_INFO_PROBE, &info) != 1)
            return -1.0;
        return static_cast<double>(info.duration) / 1e7;
    }
};

TEST_F(RealTag, WellFormedTagsChangeNothing) {
    const double frame = static_cast<double>(stream_.SamplesPerFrame()) / stream_.rate;
    const double duration = Duration(clean_);
    const Bytes escaped = {0xFF, 0x00, 0xE2, 0xFF, 0x00, 0x00, 0xFF, 0x00, 0xFB};
    const std::pair<const char*, Bytes> tags[] = {
        {"empty", Tag({})},
        {"text", Tag(Garbage(500))},
        {"with padding", Tag(Garbage(500) + Bytes(2000, 0))},
        {"unsynchronised", Tag(escaped, escaped.size(), kUnsynchronised)},
        {"with a header inside", Tag(Bytes(clean_.begin(), clean_.begin() + 2000))},
        {"of a MiB", Tag(Garbage(1024 * 1024))},
    };
    for (const auto& [name, tag] : tags) {
        SCOPED_TRACE(name);
        EXPECT_EQ(Deliver(tag + clean_), pcm_);
        EXPECT_NEAR(Duration(tag + clean_), duration, frame);
    }
}

TEST_F(RealTag, PaddingBehindTheTagIsPassedOver) {
    const Bytes little = Tag(Garbage(100)) + Bytes(1000, 0) + clean_;
    EXPECT_EQ(Deliver(little), pcm_);
    EXPECT_EQ(Open(little, TRN_OPEN_PROBE), 1);

    // The reader looks for the first 0xFF however far it is, the probe gives up after 4096 bytes.
    const Bytes much = Tag(Garbage(100)) + Bytes(10'000, 0) + clean_;
    EXPECT_EQ(Deliver(much), pcm_);
    EXPECT_EQ(Open(much, TRN_OPEN_PROBE), 0);
}

TEST_F(RealTag, SizesThatLieAreSurvived) {
    const Bytes body = Garbage(300);

    const Bytes tooShort = Tag(body, 10) + clean_;
    EXPECT_EQ(Deliver(tooShort), pcm_);
    EXPECT_EQ(Open(tooShort, TRN_OPEN_PROBE), 1);

    const Bytes behindTheEnd = Tag(body, clean_.size() * 2) + clean_;
    EXPECT_EQ(Open(behindTheEnd, TRN_OPEN_PROBE), 0);
    EXPECT_EQ(Open(behindTheEnd, TRN_OPEN_SAMPLE_READER), 0);

    const Bytes largest = Tag(body, 0x0FFFFFFF) + clean_;
    EXPECT_EQ(Open(largest, TRN_OPEN_PROBE), 0);
    EXPECT_EQ(Open(largest, TRN_OPEN_SAMPLE_READER), 0);

    // The probe takes all eight bits of a size byte, the reader seven.
    Bytes eighthBit = Tag(body) + clean_;
    eighthBit[6] |= 0x80;
    EXPECT_EQ(Open(eighthBit, TRN_OPEN_PROBE), 0);
    EXPECT_EQ(Deliver(eighthBit), pcm_);
}

TEST_F(RealTag, TagAloneIsNoStream) {
    for (const std::size_t kept : {3u, 4u, 6u, 9u, 10u, 200u}) {
        SCOPED_TRACE(kept);
        Bytes tag = Tag(Garbage(300));
        tag.resize(kept);
        EXPECT_EQ(Open(tag, TRN_OPEN_PROBE), 0);
        EXPECT_EQ(Open(tag, TRN_OPEN_SAMPLE_READER), 0);
    }
}

TEST_F(RealTag, TagFramesByName) {
    const RealStream& tagged = RealStreamNamed("long-44-128-j.mp3");
    ASSERT_TRUE(tagged.HasSkippedTagFrame());
    const Bytes original = ReadFile(tagged.Path());
    const Pcm skipped = Deliver(tagged.Path(), tagged.DeliveredSamples());
    const std::int64_t oneFrameMore = tagged.DeliveredSamples() + tagged.SamplesPerFrame();

    const std::pair<const char*, std::int32_t> names[] = {
        {"Xing", TRN_OPEN_VARIABLE_BIT_RATE}, {"VBRI", TRN_OPEN_VARIABLE_BIT_RATE}, {"info", 1}};
    for (const auto& [name, probed] : names) {
        SCOPED_TRACE(name);
        Bytes renamed = original;
        std::memcpy(renamed.data() + 36, name, 4);
        EXPECT_EQ(Open(renamed, TRN_OPEN_PROBE), probed);
        const Pcm delivered = Deliver(scratch_.Add("renamed.mp3", renamed), oneFrameMore);
        ASSERT_EQ(delivered.size(), skipped.size() + static_cast<std::size_t>(tagged.ValuesPerFrame()));
        // The delay falls into the tag frame's silence, so what was cut off before now stands in front.
        EXPECT_TRUE(std::equal(skipped.rbegin(), skipped.rend(), delivered.rbegin()));
    }
}

} // namespace
