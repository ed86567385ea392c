/// Built indexes that were cut, changed or put beside another file: what each of them brings.
#include "reader/engine.h"
#include "reader/expected_stream.h"
#include "reader/reader_streams.h"

#include "mpa/file_probe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>

using namespace trnmpa;
using test::Bytes;
using test::Engine;
using test::Pcm;

namespace {

constexpr std::int64_t kFrameSamples = 1152;
constexpr std::size_t kFrames = 12;
constexpr std::size_t kEntries = kFrames - 1;
/// A jump begins that many frames before its target: one decoded and two that fill the bit reservoir.
constexpr std::size_t kPrerollFrames = 3;
constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();

class HostileIndex : public testing::Test {
protected:
    void Write(const Bytes& index) { folder_.Add("stream.mp3.idx", index); }

    /// The built index with every entry changed, or its header.
    void WriteWith(const std::function<void(MpaIndexEntry&, std::size_t)>& change) {
        Bytes index = built_;
        for (std::size_t i = 0; i < kEntries; ++i) {
            const std::size_t at = kIndexHeaderBytes + i * kIndexEntryBytes;
            auto entry = ParseIndexEntry(std::span(index).subspan(at).first<kIndexEntryBytes>());
            change(entry, i);
            std::ranges::copy(FormatIndexEntry(entry), index.begin() + static_cast<std::ptrdiff_t>(at));
        }
        Write(index);
    }
    void WriteWithHeader(const std::function<void(MpaIndexHeader&)>& change) {
        Bytes index = built_;
        auto header = ParseIndexHeader(std::span(index).first<kIndexHeaderBytes>());
        change(header);
        std::ranges::copy(FormatIndexHeader(header), index.begin());
        Write(index);
    }

    /// Frames from `first` on as they are decoded in order; silence behind the last.
    Pcm Frames(std::size_t first, std::size_t count = 1) const {
        Pcm pcm = whole_;
        pcm.resize((first + count) * kFrameValues);
        return Pcm(pcm.begin() + static_cast<std::ptrdiff_t>(first * kFrameValues), pcm.end());
    }
    static Pcm Silence(std::size_t frames = 1) { return Pcm(frames * kFrameValues, 0); }

    /// Frame after frame from the first on.
    Pcm InOrder(std::size_t frames) const {
        Engine engine(path_);
        EXPECT_EQ(engine.Opened(), kSuccess);
        Pcm pcm;
        for (std::size_t frame = 0; frame < frames; ++frame) {
            const Pcm part = engine.Read(static_cast<std::int64_t>(frame) * kFrameSamples, kFrameSamples);
            pcm.insert(pcm.end(), part.begin(), part.end());
        }
        return pcm;
    }

    /// Some frames from a position on, as the first request.
    Pcm Jump(std::size_t frame, std::size_t frames = 1) const {
        Engine engine(path_);
        EXPECT_EQ(engine.Opened(), kSuccess);
        return engine.Read(static_cast<std::int64_t>(frame) * kFrameSamples,
                           static_cast<std::uint32_t>(frames) * kFrameSamples);
    }

    void ExpectEverythingExact() const {
        EXPECT_EQ(InOrder(kEntries + 1), Frames(0, kEntries + 1));
        for (std::size_t frame = 0; frame < kEntries; ++frame)
            EXPECT_EQ(Jump(frame), Frames(frame)) << frame;
    }

    static constexpr std::size_t kFrameValues = 2 * kFrameSamples;
    test::ScratchFolder folder_;
    const test::bitstream::Stream stream_ = test::SteadyStream(kFrames);
    const std::filesystem::path path_ = folder_.Add("stream.mp3", stream_.bytes);
    const Bytes built_ = test::BuildIndex(path_);
    const Pcm whole_ = test::DeliveredFrom(stream_, 1, 0);
};

} // namespace

TEST_F(HostileIndex, TheBuiltOneIsExact) {
    ASSERT_EQ(built_.size(), kIndexHeaderBytes + kEntries * kIndexEntryBytes);
    ExpectEverythingExact();
}

// Without a whole entry everything is silence, of no size while the width is cut off. With some, frames whose
// pre-roll begins at one of them are exact, and a read from the start is exact to the end of the file.
TEST_F(HostileIndex, CutAnywhere) {
    constexpr std::size_t kBytesThatGiveTheWidth = 21;
    for (std::size_t size = 0; size <= built_.size(); ++size) {
        SCOPED_TRACE(size);
        Write(Bytes(built_.begin(), built_.begin() + static_cast<std::ptrdiff_t>(size)));
        const std::size_t entries =
            size < kIndexHeaderBytes ? 0 : (size - kIndexHeaderBytes) / kIndexEntryBytes;
        Engine engine(path_);
        ASSERT_EQ(engine.Opened(), kSuccess);
        EXPECT_EQ(engine.Format().nBlockAlign, size < kBytesThatGiveTheWidth ? 0 : 4);
        if (entries == 0) {
            const test::Answer answer = engine.Ask(0, kFrameSamples);
            EXPECT_EQ(answer.result, kSuccess);
            EXPECT_EQ(answer.pcm, size < kBytesThatGiveTheWidth ? Pcm() : Silence());
            continue;
        }
        EXPECT_EQ(InOrder(kEntries), Frames(0, kEntries));
        for (const std::size_t frame :
             {std::size_t{1}, entries - 1, entries + 2, entries + 3, kEntries - 1}) {
            if (frame >= kEntries)
                continue;
            const std::size_t start = frame > kPrerollFrames ? frame - kPrerollFrames : 0;
            EXPECT_EQ(Jump(frame), start < entries ? Frames(frame) : Silence()) << frame;
        }
    }
}

TEST_F(HostileIndex, CutAnywhereIsDescribedAsFarAsItGoes) {
    for (std::size_t size = 0; size <= built_.size(); ++size) {
        SCOPED_TRACE(size);
        Write(Bytes(built_.begin(), built_.begin() + static_cast<std::ptrdiff_t>(size)));
        CMPGAudioFileBufferReader probe;
        ASSERT_EQ(probe.ParseFile(test::Wide(path_)), kProbeDescribed);
        EXPECT_EQ(probe.Description().classIdentifier, size >= 9 ? 2323 : 2049);
        EXPECT_EQ(probe.Description().audioFormat.nChannels, size >= 11 ? 2 : 0);
        // 44100 and 1152 have two bytes each that are not zero.
        EXPECT_EQ(probe.Description().audioFormat.nSamplesPerSec, size >= 18   ? 44100u
                                                                  : size == 17 ? 68u
                                                                               : 0u);
        const std::int64_t frames = kEntries;
        EXPECT_EQ(probe.Description().duration, size >= 26   ? frames * 1152 * 10'000'000 / 44100
                                                : size == 25 ? frames * 128 * 10'000'000 / 44100
                                                             : 0);
    }
}

TEST_F(HostileIndex, AHeaderOfZerosBeforeGoodEntries) {
    WriteWithHeader([](MpaIndexHeader& header) { header = {}; });
    Engine engine(path_);
    ASSERT_EQ(engine.Opened(), kSuccess);
    EXPECT_EQ(engine.Format().nBlockAlign, 0);
    const test::Answer answer = engine.Ask(0, kLargest);
    EXPECT_EQ(answer.result, kSuccess);
    EXPECT_EQ(answer.size, 0);
}

TEST_F(HostileIndex, CountsThatTheFileDoesNotHold) {
    for (const std::uint32_t count : {std::uint32_t{kEntries + 1}, 0x1FFFFFFFu, 0x80000000u, kLargest}) {
        WriteWithHeader([&](MpaIndexHeader& header) { header.frameCount = count; });
        ExpectEverythingExact();
    }
}

// An entry past the end ends what a jump can reach; a read in order does not look at it.
TEST_F(HostileIndex, OffsetsPastTheEnd) {
    const auto size = static_cast<std::uint32_t>(stream_.bytes.size());
    for (const std::uint32_t offset : {size, size + 1, 0x7FFFFFFFu, 0x80000000u, kLargest}) {
        SCOPED_TRACE(offset);
        WriteWith([&](MpaIndexEntry& entry, std::size_t i) {
            entry.frameOffset = i > 4 ? offset : entry.frameOffset;
        });
        EXPECT_EQ(InOrder(kEntries), Frames(0, kEntries));
        for (std::size_t frame = 0; frame < kEntries; ++frame)
            EXPECT_EQ(Jump(frame), frame <= 4 + kPrerollFrames ? Frames(frame) : Silence()) << frame;
    }
}

// Where a jump begins is all that an entry says; from there it takes one frame after another.
TEST_F(HostileIndex, DescendingOffsets) {
    WriteWith([](MpaIndexEntry& entry, std::size_t i) {
        entry.frameOffset = static_cast<std::uint32_t>(417 * (kFrames - 1 - i));
    });
    Pcm lastFrame = test::DeliveredFrom(stream_, kEntries, 0);
    lastFrame.resize(2 * kFrameValues);
    EXPECT_EQ(InOrder(2), lastFrame) << "and silence behind it";
    for (std::size_t frame = kPrerollFrames + 1; frame < kEntries; ++frame)
        EXPECT_EQ(Jump(frame), Frames(kEntries - 1 - (frame - kPrerollFrames) + kPrerollFrames)) << frame;
}

TEST_F(HostileIndex, OffsetsThatAreAllTheSame) {
    WriteWith([](MpaIndexEntry& entry, std::size_t) { entry.frameOffset = 417; });
    EXPECT_EQ(InOrder(kEntries), Frames(0, kEntries));
    for (std::size_t frame = 0; frame < kEntries; ++frame)
        EXPECT_EQ(Jump(frame), Frames(std::min(frame, kPrerollFrames))) << frame;
}

// A frame without bytes brings nothing to the bit reservoir, so a jump goes back farther than it must.
TEST_F(HostileIndex, LengthsOfNothingOnlyCostTime) {
    WriteWith([](MpaIndexEntry& entry, std::size_t) { entry.frameBytes = 0; });
    ExpectEverythingExact();
}

// Frames that claim to fill the bit reservoir alone shorten the pre-roll: what a jump decodes first may lack
// main data; one frame later everything is there.
TEST_F(HostileIndex, LengthsTooLargeSpoilTheFirstFrameOfAJump) {
    for (const std::uint32_t length : {65535u, 0x7FFFFFFFu, 0x80000000u, kLargest}) {
        SCOPED_TRACE(length);
        WriteWith([&](MpaIndexEntry& entry, std::size_t) { entry.frameBytes = length; });
        EXPECT_EQ(InOrder(kEntries), Frames(0, kEntries));
        for (std::size_t frame = 0; frame + 2 < kEntries; ++frame) {
            const Pcm pcm = Jump(frame, 3);
            ASSERT_EQ(pcm.size(), 3 * kFrameValues);
            EXPECT_EQ(Pcm(pcm.begin() + kFrameValues, pcm.end()), Frames(frame + 1, 2)) << frame;
        }
    }
}

// What the header says of layer, version, rates and frame size is compared with the stream, and the stream
// wins.
TEST_F(HostileIndex, HeaderFieldsThatTheStreamCorrects) {
    const std::function<void(MpaIndexHeader&)> changes[] = {
        [](MpaIndexHeader& header) { header.sampleRate = 0; },
        [](MpaIndexHeader& header) { header.sampleRate = kLargest; },
        [](MpaIndexHeader& header) { header.bitRate = 0; },
        [](MpaIndexHeader& header) { header.bitRate = kLargest; },
        [](MpaIndexHeader& header) { header.layer = 0; },
        [](MpaIndexHeader& header) { header.layer = 9; },
        [](MpaIndexHeader& header) { header.version = 0; },
        [](MpaIndexHeader& header) { header.version = 255; },
        [](MpaIndexHeader& header) { header.frameBytes = 0; },
        [](MpaIndexHeader& header) { header.frameBytes = 65535; },
        [](MpaIndexHeader& header) { header.samplesPerFrame = 0; },
        [](MpaIndexHeader& header) { header.samplesPerFrame = kLargest; },
        [](MpaIndexHeader& header) { header.mediaFileSize = 0; },
    };
    for (const auto& change : changes) {
        SCOPED_TRACE(&change - changes);
        WriteWithHeader(change);
        EXPECT_EQ(Engine(path_).Format().nSamplesPerSec, 44100u);
        ExpectEverythingExact();
    }
}

// The width of a sample comes from the header, whatever the stream holds. The PCM is that of the stream.
TEST_F(HostileIndex, ChannelsThatTheStreamDoesNotHave) {
    struct Case {
        std::uint16_t channels;
        std::uint16_t blockAlign;
    };
    for (const Case& wrong : {Case{0, 0}, Case{1, 2}, Case{2, 4}, Case{3, 6}, Case{65535, 65534}}) {
        SCOPED_TRACE(wrong.channels);
        WriteWithHeader([&](MpaIndexHeader& header) { header.channels = wrong.channels; });
        Engine engine(path_);
        ASSERT_EQ(engine.Opened(), kSuccess);
        EXPECT_EQ(engine.Format().nChannels, wrong.channels);
        EXPECT_EQ(engine.Format().nBlockAlign, wrong.blockAlign);
        const test::Answer answer = engine.Ask(0, 1);
        EXPECT_EQ(answer.result, kSuccess);
        const Pcm inOrder = wrong.blockAlign > whole_.size() * 2 ? Pcm(wrong.blockAlign / 2u, 0) : whole_;
        EXPECT_EQ(answer.pcm, Pcm(inOrder.begin(), inOrder.begin() + wrong.blockAlign / 2));
    }
}

// The frames that its entries happen to point at or before.
TEST_F(HostileIndex, OfAnotherFile) {
    const auto monoPath = folder_.Add("mono.mp3", test::bitstream::WriteStream([] {
                                                      auto options = test::SteadyOptions(kFrames);
                                                      options.mode = test::model::kSingleChannel;
                                                      options.sampleRateIndex = 1;
                                                      return options;
                                                  }())
                                                      .bytes);
    Write(test::BuildIndex(monoPath));
    Engine engine(path_);
    ASSERT_EQ(engine.Opened(), kSuccess);
    EXPECT_EQ(engine.Format().nChannels, 1) << "as the index says";
    EXPECT_EQ(engine.Format().nSamplesPerSec, 44100u) << "as the stream says";
    // Its first entry, 384, lies before frame 1.
    EXPECT_EQ(engine.Read(0, 2 * kFrameSamples), Frames(0));
    EXPECT_EQ(engine.Read(2 * kFrameSamples, 2 * kFrameSamples), Frames(1));

    const auto layer2Path = folder_.Add("layer2.mp2", test::Layer2Stream(40).bytes);
    Write(test::BuildIndex(layer2Path));
    Engine longer(path_);
    ASSERT_EQ(longer.Opened(), kSuccess);
    EXPECT_EQ(longer.Format().nSamplesPerSec, 44100u);
    for (std::int64_t frame = 0; frame < 40; ++frame) {
        const test::Answer answer = longer.Ask(frame * kFrameSamples, kFrameSamples);
        EXPECT_EQ(answer.result, kSuccess);
        EXPECT_EQ(answer.size, 4 * kFrameSamples);
    }
    EXPECT_EQ(Jump(39), Silence()) << "behind the end of this file";
}
