/// How much memory an index takes, whatever it claims: its own size and a constant.
#include "reader/counted_memory.h"
#include "reader/engine.h"
#include "reader/expected_stream.h"
#include "reader/reader_streams.h"

#include "mpa/file_probe.h"

#include <gtest/gtest.h>

#include <limits>

using namespace trnmpa;
using test::Bytes;

namespace {

constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();

/// Blocks of 512 KiB for the index and of 64 KiB for the media file, the decoder, and the buffers.
constexpr std::size_t kConstant = 1024 * 1024;

class IndexMemory : public testing::Test {
protected:
    /// An index that claims `claimed` entries and holds `entries`, those of the stream and more behind its
    /// end.
    Bytes IndexOf(std::uint32_t claimed, std::size_t entries) const {
        test::Index index = test::IndexOf(stream_);
        index.header.frameCount = claimed;
        while (index.entries.size() < entries)
            index.entries.push_back({index.entries.back().frameOffset + 417, 417});
        index.entries.resize(entries);
        return index.ToBytes();
    }

    /// The most that a function takes beyond what is held before it.
    template <typename Function>
    static std::size_t Peak(Function function) {
        test::ForgetPeak();
        const std::size_t before = test::MemoryHeld();
        function();
        return test::PeakMemory() - before;
    }

    std::size_t PeakOfOpening(const Bytes& index) {
        folder_.Add("stream.mp3.idx", index);
        return Peak([&] { EXPECT_EQ(test::Engine(path_).Opened(), kSuccess); });
    }

    test::ScratchFolder folder_;
    const test::bitstream::Stream stream_ = test::SteadyStream(10);
    const std::filesystem::path path_ = folder_.Add("stream.mp3", stream_.bytes);
};

} // namespace

TEST_F(IndexMemory, IsCounted) {
    EXPECT_EQ(Peak([] { Bytes bytes(12345); }), 12345u);
    const std::size_t before = test::MemoryHeld();
    const auto bytes = std::make_unique<Bytes>(100);
    EXPECT_EQ(test::MemoryHeld(), before + 100 + sizeof(Bytes));
}

TEST_F(IndexMemory, ClaimsCostNothing) {
    for (const std::size_t entries : {0u, 1u, 9u})
        for (const std::uint32_t claimed : {0u, 9u, 1000u, 0x10000000u, 0x7FFFFFFFu, 0x80000000u, kLargest}) {
            const std::size_t peak = PeakOfOpening(IndexOf(claimed, entries));
            EXPECT_LE(peak, kConstant) << claimed << " claimed, " << entries << " there";
            RecordProperty("peak", static_cast<int>(peak));
        }
}

TEST_F(IndexMemory, EntriesCostTheirSizeInTheFile) {
    for (const std::size_t entries : {1000u, 100'000u, 1'000'000u})
        for (const auto claimed : {static_cast<std::uint32_t>(entries), kLargest}) {
            const std::size_t peak = PeakOfOpening(IndexOf(claimed, entries));
            EXPECT_LE(peak, entries * kIndexEntryBytes + kConstant) << entries;
            EXPECT_GE(peak, entries * kIndexEntryBytes) << entries;
        }
    EXPECT_LE(PeakOfOpening(IndexOf(9, 1'000'000)), kConstant) << "only nine of them count";
}

TEST_F(IndexMemory, ReadingCostsTheRequest) {
    folder_.Add("stream.mp3.idx", IndexOf(kLargest, 1000));
    test::Engine engine(path_);
    ASSERT_EQ(engine.Opened(), kSuccess);
    constexpr std::uint32_t kSamples = 1000;
    constexpr std::size_t kRequest = 4 * kSamples;
    for (const std::int64_t start :
         {std::int64_t{0}, std::int64_t{5000}, std::int64_t{1} << 20, std::int64_t{1} << 62})
        EXPECT_LE(Peak([&] { engine.Ask(start, kSamples); }), 4 * kRequest) << start;
}

// Samples as wide as a header may claim make every request larger, but nothing else.
TEST_F(IndexMemory, WideSamplesCostTheirWidth) {
    test::Index index = test::IndexOf(stream_);
    index.header.channels = 65535;
    folder_.Add("stream.mp3.idx", index.ToBytes());
    test::Engine engine(path_);
    ASSERT_EQ(engine.Opened(), kSuccess);
    constexpr std::size_t kWidth = 65534;
    EXPECT_EQ(engine.Format().nBlockAlign, kWidth);
    EXPECT_LE(Peak([&] { EXPECT_EQ(engine.Ask(0, 50).size, 50 * static_cast<std::int32_t>(kWidth)); }),
              4 * 50 * kWidth);
    EXPECT_EQ(Peak([&] { EXPECT_EQ(engine.Ask(0, 40'000).result, kUnexpectedException); }), 0u)
        << "2 GiB and more are refused";
}

TEST_F(IndexMemory, TheProbeTakesNoEntries) {
    for (const std::size_t entries : {9u, 1'000'000u}) {
        folder_.Add("stream.mp3.idx", IndexOf(kLargest, entries));
        EXPECT_LE(Peak([&] {
                      CMPGAudioFileBufferReader probe;
                      EXPECT_EQ(probe.ParseFile(test::Wide(path_)), kProbeDescribed);
                  }),
                  kConstant);
    }
}
