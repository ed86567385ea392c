/// The builder against the model on thousands of files that are hard to read.
#include "index/builder/index_model.h"
#include "index/builder/index_run.h"
#include "mpa/synthetic_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

namespace {

using test::Bytes;
using test::FrameSpec;

/// Files from a seed: frames of all kinds, whole and cut off, garbage rich in what looks like a header, tags.
class FileWriter {
public:
    explicit FileWriter(std::uint32_t seed) : random_(seed) {}

    Bytes Write() {
        Bytes media = Below(3) == 0 ? Garbage(Below(200)) : Bytes();
        for (std::uint32_t pieces = Below(20); pieces > 0; --pieces)
            AddPiece(media);
        if (Below(2) == 0)
            PutTag(media);
        return media;
    }

private:
    std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_() % limit); }

    std::uint8_t Byte() {
        constexpr std::array<std::uint8_t, 12> kNearSync = {0xFF, 0xFF, 0xFF, 0xFB, 0xFA, 0xFD,
                                                            0xF3, 0xE3, 0xF0, 0xEF, 0x90, 0x0F};
        return Below(3) == 0 ? kNearSync[Below(12)] : static_cast<std::uint8_t>(Below(256));
    }

    Bytes Garbage(std::size_t size) {
        Bytes bytes(size);
        switch (Below(4)) {
        case 0:
            break;
        case 1:
            std::ranges::fill(bytes, std::uint8_t{0xFF});
            break;
        case 2:
            std::ranges::generate(bytes, [this] { return Below(200) == 0 ? Byte() : std::uint8_t{0}; });
            break;
        default:
            std::ranges::generate(bytes, [this] { return Byte(); });
        }
        return bytes;
    }

    FrameSpec Spec() {
        return {.version = static_cast<int>(Below(4)),
                .layer = 1 + static_cast<int>(Below(8) == 0 ? 0 : 1 + Below(2)),
                .bitRateIndex = static_cast<int>(Below(16)),
                .sampleRateIndex = static_cast<int>(Below(10) == 0 ? 3 : Below(3)),
                .isPadded = Below(2) == 0,
                .mode = static_cast<int>(Below(4)),
                .hasCrc = Below(2) == 0};
    }

    void AddPiece(Bytes& media) {
        if (Below(4) == 0)
            return test::Append(media, Garbage(Below(8) == 0 ? 3900 + Below(1101) : Below(60)));
        // Of the size that an index gives it, most of the time.
        const Bytes header = test::Frames(Spec(), 4, 1);
        const test::IndexModel model = test::ModelOfIndexing(header);
        std::size_t size = model.opens ? model.index[22] | std::size_t{model.index[23]} << 8 : 4 + Below(400);
        if (Below(6) == 0)
            size = 4 + Below(static_cast<std::uint32_t>(size));
        for (std::uint32_t copies = 1 + Below(4); copies > 0; --copies) {
            const std::size_t start = media.size();
            test::Append(media, header);
            test::Append(media, Garbage(std::max<std::size_t>(size, 4) - 4));
            media.resize(start + size);
        }
    }

    void PutTag(Bytes& media) {
        const std::size_t offset = Below(65);
        const auto top = static_cast<std::uint8_t>(Below(6) == 0 ? Byte() : 0);
        const Bytes tag =
            test::TagHeader(top, static_cast<std::uint8_t>(Below(20) == 0 ? Below(3) : 0),
                            static_cast<std::uint8_t>(Below(4) == 0 ? Byte() : Below(20)), Byte());
        if (media.size() >= offset + tag.size())
            std::ranges::copy(tag, media.begin() + static_cast<std::ptrdiff_t>(offset));
    }

    std::mt19937 random_;
};

struct Counts {
    int refused = 0;
    int withoutEntries = 0;
    int withMany = 0;    ///< entries
    int endedBefore = 0; ///< by garbage: much of the file is left
};

void Count(const Bytes& media, const test::IndexModel& model, Counts& counts) {
    if (!model.opens) {
        ++counts.refused;
        return;
    }
    counts.withoutEntries += model.framesIndexed == 0;
    counts.withMany += model.framesIndexed > 10;
    if (model.framesIndexed != 0) {
        const std::size_t last = model.index.size() - 8;
        const std::size_t offset = model.index[last] | std::size_t{model.index[last + 1]} << 8 |
                                   std::size_t{model.index[last + 2]} << 16;
        counts.endedBefore += offset + 6000 < media.size();
    }
}

TEST(IndexNoise, EveryFileGivesTheModelsIndex) {
    constexpr int kRounds = 3000;
    const test::ScratchFolder scratch;
    Counts counts;
    for (std::uint32_t seed = 0; seed < kRounds; ++seed) {
        const Bytes media = FileWriter(seed).Write();
        const test::IndexModel model = test::ModelOfIndexing(media);
        const test::IndexRun run = test::RunBuilderOn(scratch, media);
        ASSERT_EQ(run.opened, model.opens ? 1 : 0) << "seed " << seed;
        ASSERT_EQ(run.built, 1) << "seed " << seed;
        ASSERT_EQ(run.index, model.index) << "seed " << seed;
        ASSERT_EQ(run.progress.framesIndexed, model.framesIndexed) << "seed " << seed;
        ASSERT_EQ(run.progress.percent, model.percent) << "seed " << seed;
        ASSERT_EQ(run.progress.state, model.opens ? 1u : 2u) << "seed " << seed;
        Count(media, model, counts);
    }
    EXPECT_GT(counts.refused, kRounds / 20);
    EXPECT_LT(counts.refused, kRounds / 2);
    EXPECT_GT(counts.withoutEntries, kRounds / 100);
    EXPECT_GT(counts.withMany, kRounds / 8);
    EXPECT_GT(counts.endedBefore, kRounds / 100);
}

} // namespace
