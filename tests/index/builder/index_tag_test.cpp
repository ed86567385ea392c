/// Which leading tags the index builder passes over.
#include "index/builder/index_model.h"
#include "index/builder/index_run.h"
#include "mpa/synthetic_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <vector>

namespace {

using test::Bytes;
using test::IndexRun;

/// Frames of 417 bytes behind `lead`, which has a tag header at `tagOffset` saying `size`.
struct TaggedFile {
    std::size_t lead = 0;
    std::size_t tagOffset = 0;
    std::array<std::uint8_t, 4> size = {};
    int frames = 4;

    Bytes ToBytes() const {
        Bytes media(lead, 0);
        test::Append(media, test::Frames({}, 417, frames));
        const Bytes tag = test::TagHeader(size[0], size[1], size[2], size[3]);
        std::copy(tag.begin(), tag.end(), media.begin() + static_cast<std::ptrdiff_t>(tagOffset));
        return media;
    }
};

void AppendToFile(const std::filesystem::path& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::app);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    ASSERT_TRUE(file.flush());
}

class IndexTag : public testing::Test {
protected:
    /// The offset of entry 0, 0 without one.
    std::uint32_t FirstEntry(const Bytes& media) {
        const IndexRun run = test::RunBuilderOn(scratch_, media);
        const test::IndexModel model = test::ModelOfIndexing(media);
        EXPECT_EQ(run.opened, model.opens ? 1 : 0);
        EXPECT_EQ(run.index, model.index);
        if (run.opened != 1 || run.index.size() < 36)
            return 0;
        return run.index[28] | static_cast<std::uint32_t>(run.index[29]) << 8 |
               static_cast<std::uint32_t>(run.index[30]) << 16;
    }

    test::ScratchFolder scratch_;
};

TEST_F(IndexTag, AtTheStartIsSkipped) {
    for (const std::size_t content : {0u, 1u, 127u, 128u, 1000u, 4000u, 5000u, 70000u}) {
        const TaggedFile file = {.lead = content + 10,
                                 .size = {0, static_cast<std::uint8_t>(content >> 14),
                                          static_cast<std::uint8_t>(content >> 7 & 127),
                                          static_cast<std::uint8_t>(content & 127)}};
        EXPECT_EQ(FirstEntry(file.ToBytes()), content + 10 + 417);
    }
}

TEST_F(IndexTag, SkipsToItsEndAlthoughFramesLieInside) {
    Bytes media = test::TagHeader(0, 0, 834 >> 7, 834 & 127);
    test::Append(media, test::Frames({}, 417, 5));
    EXPECT_EQ(FirstEntry(media), 10u + 3 * 417);
}

TEST_F(IndexTag, IsFoundAtEvenOffsetsUpToSixty) {
    // The size counts from the start of the file: 3000 + 10 is in front of the third frame behind 2300 zeros.
    for (std::size_t offset = 0; offset <= 64; ++offset) {
        const TaggedFile file = {
            .lead = 2300, .tagOffset = offset, .size = {0, 0, 3000 >> 7, 3000 & 127}, .frames = 20};
        const bool isFound = offset % 2 == 0 && offset <= 60;
        const std::uint32_t frameBehindTag = 2300 + 2 * 417;
        EXPECT_EQ(FirstEntry(file.ToBytes()), isFound ? frameBehindTag + 417 : 2300u + 417u) << offset;
    }
}

TEST_F(IndexTag, TheFirstOneCounts) {
    Bytes media = TaggedFile{.lead = 2300, .tagOffset = 20, .size = {0, 0, 3000 >> 7, 3000 & 127}}.ToBytes();
    const Bytes second = test::TagHeader(0x7F, 0x7F, 0x7F, 0x7F);
    std::copy(second.begin(), second.end(), media.begin() + 32);
    EXPECT_EQ(FirstEntry(media), 2300u + 3 * 417u);
    std::copy(second.begin(), second.end(), media.begin() + 6);
    EXPECT_EQ(FirstEntry(media), 0u);
}

TEST_F(IndexTag, SmallLettersAreNoTag) {
    Bytes media = TaggedFile{.lead = 2300, .size = {0, 0, 3000 >> 7, 3000 & 127}}.ToBytes();
    media[0] = 'i';
    EXPECT_EQ(FirstEntry(media), 2300u + 417u);
}

TEST_F(IndexTag, TopBitsOfTheSizeCount) {
    // 0x81 is 129: 129 * 128 + 0x90 = 16656.
    const TaggedFile file = {.lead = 16656 + 10, .size = {0, 0, 0x81, 0x90}};
    EXPECT_EQ(FirstEntry(file.ToBytes()), 16656u + 10 + 417);
    const TaggedFile third = {.lead = 0xFF * 128 + 0xFF + 10, .size = {0, 0, 0xFF, 0xFF}};
    EXPECT_EQ(FirstEntry(third.ToBytes()), 0xFFu * 128 + 0xFF + 10 + 417);
}

TEST_F(IndexTag, MayNotReach256MiB) {
    // Both end behind the file, where there is no frame; what tells them apart is where the run stops.
    for (const auto& size : std::vector<std::array<std::uint8_t, 4>>{{0x80, 0, 0, 0},
                                                                     {0x7F, 0x80, 0, 0},
                                                                     {0x7F, 0x7F, 0x80, 0},
                                                                     {0x7F, 0x7F, 0x7F, 0x80},
                                                                     {0xFF, 0xFF, 0xFF, 0xFF},
                                                                     {0x7F, 0x7F, 0x7F, 0x7F},
                                                                     {0, 1, 0, 0}}) {
        const IndexRun run =
            test::RunBuilder(scratch_.Add("song.mp3", TaggedFile{.lead = 100, .size = size}.ToBytes()));
        EXPECT_EQ(run.opened, 0);
        EXPECT_EQ(run.index, test::kPlaceholder);
        EXPECT_EQ(run.progress.state, TRN_INDEX_FAILED);
    }
}

TEST_F(IndexTag, JustBelow256MiBIsBelieved) {
    // A file with a hole: the largest tag that may be, and two frames.
    constexpr std::uintmax_t kTagBytes = (1u << 28) - 1 + 10;
    const auto path = scratch_.Add("song.mp3", test::TagHeader(0x7F, 0x7F, 0x7F, 0x7F));
    const auto tooLarge = scratch_.Add("large.mp3", test::TagHeader(0x7F, 0x7F, 0x7F, 0x80));
    for (const auto& file : {path, tooLarge}) {
        std::filesystem::resize_file(file, kTagBytes + (file == tooLarge ? 1 : 0));
        AppendToFile(file, test::Frames({}, 417, 2));
    }
    const IndexRun run = test::RunBuilder(path);
    EXPECT_EQ(run.opened, 1);
    ASSERT_EQ(run.index.size(), 36u);
    EXPECT_EQ(Bytes(run.index.begin() + 28, run.index.end()), (Bytes{0xAA, 0x01, 0, 0x10, 0xA1, 1, 0, 0}));
    EXPECT_EQ(test::RunBuilder(tooLarge).opened, 0);
}

TEST_F(IndexTag, ThatEndsBehindTheFileLeavesNoFrame) {
    for (const std::uint8_t pages : Bytes{20, 40, 127}) {
        const IndexRun run = test::RunBuilder(
            scratch_.Add("song.mp3", TaggedFile{.lead = 10, .size = {0, pages, 0, 0}}.ToBytes()));
        EXPECT_EQ(run.opened, 0);
        EXPECT_EQ(run.index, test::kPlaceholder);
    }
}

TEST_F(IndexTag, CutOffByTheEndOfTheFile) {
    const Bytes media = TaggedFile{.lead = 64, .size = {0, 0, 0, 30}, .frames = 0}.ToBytes();
    for (std::size_t size = 0; size < 20; ++size)
        EXPECT_EQ(FirstEntry(Bytes(media.begin(), media.begin() + static_cast<std::ptrdiff_t>(size))), 0u);
}

} // namespace
