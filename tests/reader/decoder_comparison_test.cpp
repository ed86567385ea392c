/// The module with the external decoder: beside the built-in one, and exact from any position. This program
/// is alone in its folder and writes the settings file beside itself.

#include "reader/foreign_bytes.h"
#include "reader/reader_streams.h"
#include "reader/settings_file.h"
#include "real/delivery.h"
#include "real/real_streams.h"
#include "support/loaded_module.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <span>

namespace {

using namespace test;
using Reader = std::unique_ptr<PLUGIN_FILE_READER_CLASS>;

/// Samples that the decoders' layer III output begins with, left out of streams without index.
constexpr std::int64_t kExternalDelay = 529;
constexpr std::int64_t kDelaysApart = kDecoderDelay - kExternalDelay;
/// An index begins with the second frame, so that the main data which the first frame left is missing; each
/// decoder makes of it what it can.
constexpr std::int64_t kUnlikeWithIndex = 4 * 1152;

/// A media file of known length.
struct Media {
    std::filesystem::path path;
    int layer = 3;
    int channels = 2;
    std::int64_t decodedSamples = 0; ///< of the frames that are delivered, per channel
    bool hasIndex = false;

    std::int64_t SamplesBehind(std::int64_t delay) const {
        return decodedSamples - (layer == 3 && !hasIndex ? delay : 0);
    }
};

class BothDecoders : public testing::Test {
protected:
    const SettingsFile settings_;
    const ScratchFolder scratch_;
    LoadedModule module_;

    Reader Open(const Media& media, const char* decoder) {
        settings_.SelectDecoder(decoder);
        return module_.OpenForReading(media.path);
    }
    Reader OpenExternal(const Media& media) { return Open(media, "1"); }

    static Pcm Whole(PLUGIN_FILE_READER_CLASS& reader, std::int64_t samples) {
        return ReadThrough(reader, samples, 5000);
    }

    Media Add(const bitstream::Stream& stream, bool hasIndex) {
        const bitstream::FrameRecord& first = stream.frames.front();
        const std::string name = std::to_string(count_++) + ".mp3";
        const auto frames = static_cast<std::int64_t>(stream.frames.size()) - (hasIndex ? 1 : 0);
        const int samples = first.header.layer == 3 && first.header.lsf ? 576 : 1152;
        if (hasIndex)
            scratch_.Add(name + ".idx", IndexOf(stream).ToBytes());
        return {scratch_.Add(name, stream.bytes), first.header.layer, first.header.channels, frames * samples,
                hasIndex};
    }

    /// A copy of a real stream, with the index that the module builds if one is wanted.
    Media AddReal(const RealStream& stream, bool hasIndex) {
        Media media{scratch_.Add(stream.file, ReadFile(stream.Path())), stream.layer, stream.channels, 0,
                    hasIndex};
        if (hasIndex) {
            BuildIndexBeside(module_, media.path);
            media.decodedSamples = stream.SamplesWithIndex();
        } else {
            media.decodedSamples =
                stream.DeliveredSamples() + (stream.layer == 3 ? std::int64_t{kDecoderDelay} : 0);
        }
        return media;
    }

    /// The same sound, at full scale, each behind its own delay; `unlikeSamples` at the start are not
    /// compared.
    void ExpectAgreement(const Media& media, std::int64_t unlikeSamples = 0) {
        const Reader builtIn = Open(media, "0");
        const Reader external = OpenExternal(media);
        ASSERT_TRUE(builtIn && external);
        const Pcm left = Whole(*builtIn, media.SamplesBehind(kDecoderDelay));
        const Pcm right = Whole(*external, media.SamplesBehind(kExternalDelay));
        const std::int64_t apart = media.layer == 3 && !media.hasIndex ? kDelaysApart : 0;
        ASSERT_EQ(left.size() + static_cast<std::size_t>(apart * media.channels), right.size());
        const auto aligned = std::span(right).subspan(static_cast<std::size_t>(apart * media.channels));
        const auto unlike = static_cast<std::size_t>(unlikeSamples * media.channels);
        EXPECT_LE(Distance(std::span(left).subspan(unlike), aligned.subspan(unlike)).largest, 2);
        EXPECT_GT(Distance(left, Pcm(left.size(), 0)).rms, 300) << "hardly any sound to compare";
    }

    /// Requests anywhere, at times where the last one ended, bring what reading through brings.
    void ExpectExactDelivery(const Media& media, unsigned seed) {
        const std::int64_t samples = media.SamplesBehind(kExternalDelay);
        const Reader inOrder = OpenExternal(media);
        ASSERT_NE(inOrder, nullptr);
        const Pcm whole = Whole(*inOrder, samples);
        ASSERT_EQ(whole.size(), static_cast<std::size_t>(samples * media.channels));
        std::mt19937 random(seed);
        for (int readers = 0; readers < 4; ++readers) {
            const Reader reader = OpenExternal(media);
            ASSERT_NE(reader, nullptr);
            std::int64_t start = 0;
            for (int i = 0; i < 15; ++i) {
                if (random() % 3 != 0)
                    start = static_cast<std::int64_t>(random()) % (samples + samples / 20);
                const auto count = static_cast<std::uint32_t>(1 + random() % 6000);
                const auto answer = ReadPcm(*reader, start, count);
                ASSERT_TRUE(answer);
                ASSERT_TRUE(*answer == Expected(whole, media.channels, start, count))
                    << count << " samples at " << start;
                start += count;
            }
        }
    }

    /// Of a read that crosses the end just the missing rest is silence.
    static Pcm Expected(const Pcm& whole, int channels, std::int64_t start, std::uint32_t count) {
        Pcm expected(static_cast<std::size_t>(count) * static_cast<std::size_t>(channels));
        const auto first = std::min<std::size_t>(static_cast<std::size_t>(start * channels), whole.size());
        const std::size_t there = std::min(expected.size(), whole.size() - first);
        std::copy_n(whole.begin() + static_cast<std::ptrdiff_t>(first), there, expected.begin());
        return expected;
    }

private:
    int count_ = 0;
};

/// Streams without short blocks, in which the decoders are close.
std::vector<bitstream::Stream>
LongBlockStreams(bitstream::ReservoirUse reservoir = bitstream::ReservoirUse::kFull) {
    std::vector<bitstream::Stream> streams;
    for (const auto version :
         {bitstream::Version::kMpeg1, bitstream::Version::kMpeg2, bitstream::Version::kMpeg25})
        for (const int mode : {model::kStereo, model::kSingleChannel}) {
            bitstream::StreamOptions options;
            options.version = version;
            options.mode = mode;
            options.sampleRateIndex = static_cast<int>(streams.size()) % 3;
            options.frames = 40;
            options.seed = 100 + streams.size();
            options.padding = bitstream::Padding::kNever;
            options.layer3.reservoir = reservoir;
            // Once so loud that the gain meets its limits.
            options.layer3.level = streams.empty() ? 0.7 : 0.15;
            streams.push_back(bitstream::WriteStream(options));
        }
    streams.push_back(Layer2Stream(30));
    return streams;
}

TEST_F(BothDecoders, AgreeBehindTheirDelays) {
    for (const bitstream::Stream& stream : LongBlockStreams()) {
        SCOPED_TRACE(stream.frames.front().header.sampleRate);
        ExpectAgreement(Add(stream, false));
    }
}

TEST_F(BothDecoders, AgreeWithAnIndexWhereNoDelayIsLeftOut) {
    for (const bitstream::Stream& stream : LongBlockStreams(bitstream::ReservoirUse::kNone)) {
        SCOPED_TRACE(stream.frames.front().header.sampleRate);
        ExpectAgreement(Add(stream, true));
    }
    for (const bitstream::Stream& stream : LongBlockStreams()) {
        SCOPED_TRACE(stream.frames.front().header.sampleRate);
        ExpectAgreement(Add(stream, true), kUnlikeWithIndex);
    }
}

TEST_F(BothDecoders, AgreeOnRealStreams) {
    int compared = 0;
    for (const RealStream& stream : RealStreams()) {
        if (stream.shortBlocks > 0 || stream.IsFreeFormat() || stream.IsLowRateLayer2() ||
            stream.file.starts_with("long-44") || stream.file.starts_with("l2-44-1"))
            continue;
        SCOPED_TRACE(stream.file);
        if (stream.HasConstantBitRate())
            ExpectAgreement(AddReal(stream, false));
        ExpectAgreement(AddReal(stream, true), stream.layer == 3 ? kUnlikeWithIndex : 0);
        ++compared;
    }
    EXPECT_GE(compared, 12);
}

TEST_F(BothDecoders, ExternalIsExactAtConstantBitRate) {
    ExpectExactDelivery(Add(SteadyStream(50), false), 1);
    ExpectExactDelivery(Add(Layer2Stream(50), false), 2);
    for (const char* file :
         {"cbr-44-128.mp3", "cbr-48-64.mp3", "low-22-64.mp3", "mono-44-64.mp3", "l2-44-192.mp2"}) {
        SCOPED_TRACE(file);
        ExpectExactDelivery(AddReal(RealStreamNamed(file), false), 3);
    }
}

TEST_F(BothDecoders, ExternalIsExactWithAnIndex) {
    ExpectExactDelivery(Add(SteadyStream(50), true), 4);
    ExpectExactDelivery(Add(ChangingStream(60), true), 5);
    for (const bitstream::Stream& stream : LongBlockStreams())
        ExpectExactDelivery(Add(stream, true), 6);
    for (const char* file :
         {"vbr-44-v2.mp3", "vbr-22-v2.mp3", "abr-44-96-untagged.mp3", "vbr-44-mono-v4.mp3"}) {
        SCOPED_TRACE(file);
        ExpectExactDelivery(AddReal(RealStreamNamed(file), true), 7);
    }
}

/// All kinds of blocks and stereo that encoders write: the library is not exact over frames of a byte or two
/// of main data, nor over mixed blocks in MPEG 2.5.
bitstream::StreamOptions AnyOptions(std::mt19937& random, unsigned seed) {
    constexpr bitstream::Version kVersions[] = {bitstream::Version::kMpeg1, bitstream::Version::kMpeg2,
                                                bitstream::Version::kMpeg25};
    constexpr int kModes[] = {model::kStereo, model::kJointStereo, model::kSingleChannel};
    bitstream::StreamOptions options;
    options.seed = seed;
    options.frames = 60;
    options.version = kVersions[seed % 3];
    options.mode = kModes[random() % 3];
    if (options.mode == model::kJointStereo)
        options.modeExtensions = {0, 1, 2, 3};
    options.sampleRateIndex = static_cast<int>(random() % 3);
    options.crc = random() % 2 == 0;
    const int lowest = options.version == bitstream::Version::kMpeg1 ? 1 : 4;
    options.bitrateIndices = {lowest, lowest, lowest, lowest, 14};
    options.layer3.blocks = {{0}, {1}, {2}, {3}};
    if (options.version != bitstream::Version::kMpeg25)
        options.layer3.blocks.push_back({2, true});
    return options;
}

/// In files that hold other things besides the frames.
TEST_F(BothDecoders, ExternalIsExactWithAnIndexWhateverTheFileHolds) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const bitstream::Stream stream = bitstream::WriteStream(AnyOptions(random, seed));
        const Surroundings surroundings{random() % 2 == 0, random() % 2 == 0, random() % 2 == 0, seed};
        ExpectExactDelivery(Add(Surround(stream, surroundings), true), seed);
        if (HasFatalFailure())
            return;
    }
}

TEST_F(BothDecoders, AnInfoFrameIsPassedOverAndAXingFrameIsAFrame) {
    const bitstream::Stream stream = SteadyStream(30);
    const Media plain = Add(stream, false);
    const std::int64_t samples = plain.SamplesBehind(kExternalDelay);
    const Pcm expected = Whole(*OpenExternal(plain), samples);

    Media info = plain;
    info.path = scratch_.Add("info.mp3", Joined({DescribingFrame(stream, "Info"), stream.bytes}));
    EXPECT_TRUE(Whole(*OpenExternal(info), samples) == expected);
    ExpectExactDelivery(info, 8);

    Media xing = plain;
    xing.path = scratch_.Add("xing.mp3", Joined({DescribingFrame(stream, "Xing"), stream.bytes}));
    xing.decodedSamples += 1152;
    const Pcm longer = Whole(*OpenExternal(xing), samples + 1152);
    ASSERT_EQ(longer.size(), expected.size() + std::size_t{2 * 1152});
    EXPECT_TRUE(std::all_of(longer.begin(), longer.begin() + 2 * (1152 - kExternalDelay),
                            [](std::int16_t value) { return value == 0; }));
    EXPECT_LE(Distance(expected, std::span(longer).subspan(2 * 1152)).largest, 1);
    ExpectExactDelivery(xing, 9);
}

TEST_F(BothDecoders, AFileWithoutFramesDoesNotOpen) {
    for (const Bytes& bytes : {Bytes(), Bytes(5000, 0x55)}) {
        const auto path = scratch_.Add("none.mp3", bytes);
        EXPECT_EQ(OpenExternal({.path = path}), nullptr);
    }
    EXPECT_EQ(OpenExternal({.path = scratch_.Path() / "missing.mp3"}), nullptr);
}

} // namespace
