/// Media files of up to 4 GiB with frames to their end, computed instead of stored.
#include "fileio/file_reader.h"
#include "index/builder/index_run.h"
#include "index/builder/watchdog.h"
#include "mpa/synthetic_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

using test::Bytes;

/// Layer II, 384 kbit/s, 32000 Hz, padded: the longest frames that there are.
constexpr test::FrameSpec kLongest = {.layer = 2, .bitRateIndex = 14, .sampleRateIndex = 2, .isPadded = true};
constexpr std::int64_t kFrameBytes = 1729;

std::int64_t mediaBytes = 0;
std::int64_t mediaPosition = 0;

} // namespace

// Stands in for the library's files to read: every file exists and holds `mediaBytes` bytes of frames.

std::int32_t TRCT_FileAccess::Initialize(std::int32_t) {
    return 1;
}

std::int32_t TRCT_FileAccess::OpenFile(CComBSTR, std::int32_t) {
    mediaPosition = 0;
    return 1;
}

std::int32_t TRCT_FileAccess::CloseFile() {
    return 1;
}

std::uint32_t TRCT_FileAccess::Read(void* buffer, std::uint32_t count) {
    const auto header = test::HeaderOf(kLongest);
    const std::int64_t begin = mediaPosition;
    const std::int64_t end = std::clamp<std::int64_t>(begin + count, begin, std::max(begin, mediaBytes));
    auto* bytes = static_cast<std::uint8_t*>(buffer);
    std::memset(bytes, 0, static_cast<std::size_t>(end - begin));
    for (std::int64_t frame = begin / kFrameBytes * kFrameBytes; frame < end; frame += kFrameBytes)
        for (std::int64_t i = 0; i < 4; ++i)
            if (frame + i >= begin && frame + i < end)
                bytes[frame + i - begin] = header[static_cast<std::size_t>(i)];
    mediaPosition = end;
    return static_cast<std::uint32_t>(end - begin);
}

std::int64_t TRCT_FileAccess::GetPosition() const {
    return mediaPosition;
}

std::int64_t TRCT_FileAccess::GetLength() const {
    return mediaBytes;
}

std::int32_t TRCT_FileAccess::SetPosition(std::int64_t position) {
    mediaPosition = position;
    return position >= 0 ? 1 : 0;
}

void TRCT_FileAccess::SetStorageFolder(const std::wstring&) {}

std::int32_t TRCT_FileExists(CComBSTR) {
    return 1;
}

namespace {

/// Every entry is where its frame is, to the end of the file.
void ExpectAllFrames(std::int64_t size) {
    const test::Watchdog watchdog(std::chrono::seconds(200));
    mediaBytes = size;
    const test::ScratchFolder scratch;
    const test::IndexRun run = test::RunBuilder(scratch.Path() / "computed.mp3");
    EXPECT_EQ(run.opened, 1);
    EXPECT_EQ(run.progress.state, TRN_INDEX_FINISHED);
    // A frame counts from its header on.
    const auto entries = static_cast<std::uint32_t>((size - 4) / kFrameBytes);
    EXPECT_EQ(run.progress.framesIndexed, entries);
    ASSERT_EQ(run.index.size(), 28 + std::size_t{8} * entries);
    Bytes expected;
    const auto put = [&expected](std::uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8)
            expected.push_back(static_cast<std::uint8_t>(value >> shift));
    };
    put(entries);
    put(static_cast<std::uint32_t>(size));
    expected.insert(expected.end(), run.index.begin() + 8, run.index.begin() + 28);
    for (std::uint32_t i = 1; i <= entries; ++i) {
        put(i * static_cast<std::uint32_t>(kFrameBytes));
        put(static_cast<std::uint32_t>(kFrameBytes));
    }
    EXPECT_TRUE(run.index == expected);
}

TEST(LargeMedia, FramesUpToFourGiB) {
    // The last frame ends behind what 32 bits can say.
    constexpr std::int64_t kMost = (std::int64_t{1} << 32) - 1;
    static_assert((kMost - 4) / kFrameBytes * kFrameBytes + kFrameBytes > kMost);
    ExpectAllFrames(kMost);
}

TEST(LargeMedia, FourGiBAreRefused) {
    mediaBytes = std::int64_t{1} << 32;
    const test::ScratchFolder scratch;
    const test::IndexRun run = test::RunBuilder(scratch.Path() / "computed.mp3");
    EXPECT_EQ(run.opened, 0);
    EXPECT_EQ(run.index, Bytes());
}

} // namespace
