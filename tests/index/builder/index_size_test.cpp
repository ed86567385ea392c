/// Media files at the end of what 32-bit offsets reach, made with holes.
#include "index/builder/index_run.h"
#include "mpa/synthetic_stream.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using test::Bytes;

constexpr std::uintmax_t k4GiB = std::uintmax_t{1} << 32;

/// Three frames, and nothing behind them up to `size`.
fs::path FileOf(const test::ScratchFolder& scratch, std::uintmax_t size) {
    const fs::path media = scratch.Add("song.mp3", test::Frames({}, 417, 3));
    fs::resize_file(media, size);
    return media;
}

TEST(IndexSize, FourGiBAreRefusedAndAnIndexStays) {
    for (const std::uintmax_t size : {k4GiB, k4GiB + 1, k4GiB + 2000, 3 * k4GiB}) {
        const test::ScratchFolder scratch;
        const fs::path media = FileOf(scratch, size);
        EXPECT_EQ(test::RunBuilder(media).index, Bytes()) << "nothing is made";
        test::WriteFile(test::IndexPathOf(media), Bytes{1, 2, 3});
        const test::IndexRun run = test::RunBuilder(media);
        EXPECT_EQ(run.opened, 0);
        EXPECT_EQ(run.progress.state, TRN_INDEX_FAILED);
        EXPECT_EQ(run.index, (Bytes{1, 2, 3}));
    }
}

TEST(IndexSize, LargerThanTwoGiB) {
    for (const std::uintmax_t size : {k4GiB / 2 - 1, k4GiB / 2, k4GiB / 2 + 5, k4GiB - 1}) {
        const test::ScratchFolder scratch;
        const test::IndexRun run = test::RunBuilder(FileOf(scratch, size));
        EXPECT_EQ(run.opened, 1);
        EXPECT_EQ(run.progress.state, TRN_INDEX_FINISHED);
        EXPECT_EQ(run.progress.percent, 100u);
        ASSERT_EQ(run.index.size(), 28u + 16u);
        Bytes countAndSize = {2, 0, 0, 0};
        for (int shift = 0; shift < 32; shift += 8)
            countAndSize.push_back(static_cast<std::uint8_t>(size >> shift));
        EXPECT_EQ(Bytes(run.index.begin(), run.index.begin() + 8), countAndSize);
    }
}

} // namespace
