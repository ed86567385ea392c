#include "os/block_reader.h"

#include "platform/path_samples.h"
#include "support/test_files.h"

#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>
#include <initializer_list>
#include <limits>
#include <random>

namespace {

using os::BlockReader;
using test::Bytes;

constexpr std::size_t kFileBytes = 10007;

class BlockReaderTest : public testing::Test {
protected:
    test::ScratchFolder scratch_;
    const Bytes content_ = test::NumberedBytes(kFileBytes);
    const std::wstring path_ = test::Wide(scratch_.Add("a.bin", content_));
};

TEST_F(BlockReaderTest, ClosedGivesNothing) {
    BlockReader reader;
    Bytes buffer(10);
    EXPECT_FALSE(reader.IsOpen());
    EXPECT_EQ(reader.Read(buffer), 0u);
    EXPECT_EQ(reader.Position(), 0);
    EXPECT_EQ(reader.Length(), 0);
    EXPECT_FALSE(reader.SetPosition(0));
}

TEST_F(BlockReaderTest, RefusesPositionsBelowZero) {
    BlockReader reader;
    ASSERT_TRUE(reader.Open(path_));
    ASSERT_TRUE(reader.SetPosition(5));
    EXPECT_FALSE(reader.SetPosition(-1));
    EXPECT_FALSE(reader.SetPosition(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(reader.Position(), 5);
}

TEST_F(BlockReaderTest, BehindTheEndReadsNothing) {
    BlockReader reader;
    ASSERT_TRUE(reader.Open(path_));
    Bytes buffer(10);
    for (const std::int64_t position : {std::int64_t{kFileBytes}, std::int64_t{kFileBytes} + 1,
                                        std::int64_t{1} << 40, std::numeric_limits<std::int64_t>::max()}) {
        ASSERT_TRUE(reader.SetPosition(position));
        EXPECT_EQ(reader.Read(buffer), 0u) << position;
        EXPECT_EQ(reader.Position(), position);
    }
    ASSERT_TRUE(reader.SetPosition(0));
    EXPECT_EQ(reader.Read(buffer), 10u);
}

TEST_F(BlockReaderTest, OpenStartsAnew) {
    BlockReader reader;
    Bytes buffer(10);
    ASSERT_TRUE(reader.Open(path_));
    EXPECT_EQ(reader.Read(buffer), 10u);
    const Bytes other(20, 0x5A);
    ASSERT_TRUE(reader.Open(test::Wide(scratch_.Add("b.bin", other))));
    EXPECT_EQ(reader.Position(), 0);
    EXPECT_EQ(reader.Read(buffer), 10u);
    EXPECT_EQ(buffer, Bytes(10, 0x5A));
    EXPECT_FALSE(reader.Open(test::Wide(scratch_.Path() / "missing")));
    EXPECT_FALSE(reader.IsOpen());
    EXPECT_EQ(reader.Read(buffer), 0u);
}

TEST_F(BlockReaderTest, ChangingTheBlockSizeKeepsThePosition) {
    BlockReader reader;
    ASSERT_TRUE(reader.Open(path_));
    Bytes buffer(100);
    for (const std::size_t size : std::initializer_list<std::size_t>{7, 0, 1, 4096}) {
        const auto position = static_cast<std::size_t>(reader.Position());
        reader.SetBlockBytes(size);
        ASSERT_EQ(reader.Read(buffer), 100u);
        EXPECT_TRUE(std::equal(buffer.begin(), buffer.end(),
                               content_.begin() + static_cast<std::ptrdiff_t>(position)));
    }
}

TEST_F(BlockReaderTest, SeesWhatIsAppended) {
    BlockReader reader;
    const auto path = scratch_.Add("grows.bin", Bytes(10, 1));
    ASSERT_TRUE(reader.Open(test::Wide(path)));
    Bytes buffer(20);
    EXPECT_EQ(reader.Read(buffer), 10u);
    test::WriteFile(path, Bytes(30, 1));
    EXPECT_EQ(reader.Length(), 30);
    EXPECT_EQ(reader.Read(buffer), 20u);
}

class BlockSizes : public BlockReaderTest, public testing::WithParamInterface<std::size_t> {};

/// Whatever the block size and the order of moves and reads, the bytes are those of the file.
TEST_P(BlockSizes, RandomReadsGiveTheFilesBytes) {
    BlockReader reader;
    reader.SetBlockBytes(GetParam());
    ASSERT_TRUE(reader.Open(path_));
    std::mt19937 random(static_cast<std::uint32_t>(GetParam()) + 1);
    std::size_t position = 0;
    for (int round = 0; round < 4000; ++round) {
        if (random() % 3 == 0) {
            position = random() % (kFileBytes + 100);
            ASSERT_TRUE(reader.SetPosition(static_cast<std::int64_t>(position)));
        }
        Bytes buffer(random() % (random() % 8 == 0 ? 3000 : 20), 0xEE);
        const std::size_t expected =
            position < kFileBytes ? std::min(buffer.size(), kFileBytes - position) : 0;
        ASSERT_EQ(reader.Read(buffer), expected) << "round " << round << ", position " << position;
        ASSERT_TRUE(
            std::equal(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(expected),
                       content_.begin() + static_cast<std::ptrdiff_t>(std::min(position, kFileBytes))))
            << "round " << round << ", position " << position;
        ASSERT_TRUE(std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(expected), buffer.end(),
                                [](std::uint8_t byte) { return byte == 0xEE; }));
        position += expected;
        ASSERT_EQ(reader.Position(), static_cast<std::int64_t>(position));
        ASSERT_EQ(reader.Length(), static_cast<std::int64_t>(kFileBytes));
    }
}

INSTANTIATE_TEST_SUITE_P(Bytes, BlockSizes,
                         testing::Values(1, 2, 3, 7, 64, 1000, 4096, kFileBytes, kFileBytes + 1, 0,
                                         BlockReader::kMaximumBlockBytes,
                                         std::numeric_limits<std::size_t>::max()));

} // namespace
