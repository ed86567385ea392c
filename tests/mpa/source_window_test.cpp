#include "mpa/source_window.h"

#include "mpa/synthetic_stream.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <random>

using trnmpa::SourceWindow;

namespace {

test::Bytes Numbered(std::size_t size) {
    test::Bytes bytes(size);
    std::mt19937 random(7);
    std::ranges::generate(bytes, [&] { return static_cast<std::uint8_t>(random()); });
    return bytes;
}

} // namespace

TEST(SourceWindow, GivesTheBytesOfTheSourceFromAnywhere) {
    const test::Bytes bytes = Numbered(3 * SourceWindow::kBytes + 123);
    test::MemorySource source(bytes);
    SourceWindow window(source);
    std::mt19937 random(11);
    for (int round = 0; round < 2000; ++round) {
        const std::size_t offset = random() % (bytes.size() + 100);
        const std::size_t count = random() % 4 == 0 ? SourceWindow::kBytes : random() % 5000;
        const std::size_t begin = std::min(offset, bytes.size());
        const std::size_t expected = std::min(count, bytes.size() - begin);
        const auto read = window.At(static_cast<std::int64_t>(offset), count);
        ASSERT_EQ(read.size(), expected) << offset << ", " << count;
        ASSERT_TRUE(std::ranges::equal(read, std::span(bytes).subspan(begin, expected)));
    }
}

TEST(SourceWindow, NothingLiesBehindTheEndOrBeforeTheStart) {
    test::MemorySource source(Numbered(100));
    SourceWindow window(source);
    EXPECT_TRUE(window.At(100, 4).empty());
    EXPECT_TRUE(window.At(std::numeric_limits<std::int64_t>::max(), 4).empty());
    EXPECT_TRUE(window.At(-1, 4).empty());
    EXPECT_EQ(window.At(98, 4).size(), 2u);
    EXPECT_EQ(window.At(0, 4).size(), 4u);
}

TEST(SourceWindow, LooksAheadAndBackWithoutReadingAgain) {
    const test::Bytes bytes = Numbered(std::size_t{1} << 20);
    test::MemorySource source(bytes);
    SourceWindow window(source);
    for (std::int64_t offset = 0; offset < std::ssize(bytes); ++offset)
        window.At(offset, 2000);
    EXPECT_LT(source.BytesRead(), bytes.size() + bytes.size() / 16);
}
