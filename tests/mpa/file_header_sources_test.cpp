#include "mpa/file_header_sources.h"

#include "fileio/frame_buffer_reader.h"
#include "mpa/first_frame_search.h"
#include "mpa/stream_start.h"
#include "mpa/synthetic_stream.h"
#include "os/automation_string.h"

#include <gmock/gmock.h>

#include <numeric>

using namespace trnmpa;
using test::Bytes;

namespace {

Bytes Counted(std::size_t size) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    return bytes;
}

/// What every source does with a file of 100 bytes.
void ExpectContract(HeaderSource& source) {
    Bytes buffer(60, 0xEE);
    EXPECT_EQ(source.Position(), 0);
    EXPECT_EQ(source.Read(buffer), 60u);
    EXPECT_EQ(buffer[59], 59);
    EXPECT_EQ(source.Position(), 60);
    EXPECT_EQ(source.Read(buffer), 40u);
    EXPECT_EQ(buffer[0], 60);
    EXPECT_EQ(buffer[39], 99);
    EXPECT_EQ(source.Position(), 100);
    EXPECT_EQ(source.Read(buffer), 0u);
    EXPECT_TRUE(source.SetPosition(0));
    EXPECT_EQ(source.Read({}), 0u);
    EXPECT_EQ(source.Position(), 0);
    EXPECT_TRUE(source.SetPosition(99));
    EXPECT_EQ(source.Read(buffer), 1u);
    EXPECT_EQ(buffer[0], 99);
    EXPECT_TRUE(source.SetPosition(std::int64_t{1} << 40));
    EXPECT_EQ(source.Read(buffer), 0u);
    EXPECT_FALSE(source.SetPosition(-1));
    EXPECT_TRUE(source.SetPosition(10));
    EXPECT_EQ(ReadFourBytes(source, 50), (std::array<std::uint8_t, 4>{50, 51, 52, 53}));
    EXPECT_EQ(ReadFourBytes(source, 98), (std::array<std::uint8_t, 4>{98, 99, 0, 0}));
    EXPECT_EQ(ReadFourBytes(source, 100), (std::array<std::uint8_t, 4>{}));
    EXPECT_EQ(ReadFourBytes(source, -1), (std::array<std::uint8_t, 4>{}));
}

} // namespace

TEST(FileHeaderSources, FileAccess) {
    const test::ScratchFolder folder;
    TRCT_FileAccess file;
    ASSERT_EQ(file.OpenFile(os::ToAutomationString(test::Wide(folder.Add("a", Counted(100)))), 1), 1);
    FileAccessHeaderSource source(file);
    ExpectContract(source);
}

TEST(FileHeaderSources, FrameBufferOverBothBackEnds) {
    const test::ScratchFolder folder;
    const std::wstring path = test::Wide(folder.Add("a", Counted(100)));
    for (const bool useEasyFile : {false, true}) {
        SCOPED_TRACE(useEasyFile);
        CMpAudioFrameBufferReader reader;
        if (useEasyFile)
            reader.UseEasyFile(0, 1);
        ASSERT_EQ(reader.Open(path), 1);
        FrameBufferHeaderSource source(reader);
        ExpectContract(source);
    }
}

TEST(FileHeaderSources, ClosedFilesGiveNothing) {
    CMpAudioFrameBufferReader reader;
    FrameBufferHeaderSource source(reader);
    Bytes buffer(4, 0);
    EXPECT_EQ(source.Read(buffer), 0u);
    EXPECT_FALSE(LocateAudioStart(source));
    TRCT_FileAccess file;
    FileAccessHeaderSource access(file);
    EXPECT_EQ(access.Read(buffer), 0u);
    MpaFrameHeader header;
    EXPECT_FALSE(FindFirstFrame(access, header));
}

TEST(FileHeaderSources, SearchesReachTheEndOfTheFileOnBothBackEnds) {
    const test::ScratchFolder folder;
    Bytes bytes = test::TagHeader(0, 0, 2, 1);
    bytes.resize(200000, 0);
    bytes.insert(bytes.end(), {0xFF, 0xFB, 0x90, 0x00});
    const std::wstring path = test::Wide(folder.Add("a", bytes));
    for (const bool useEasyFile : {false, true}) {
        SCOPED_TRACE(useEasyFile);
        CMpAudioFrameBufferReader reader;
        if (useEasyFile)
            reader.UseEasyFile(0, 4);
        ASSERT_EQ(reader.Open(path), 1);
        FrameBufferHeaderSource source(reader);
        const auto start = LocateAudioStart(source);
        ASSERT_TRUE(start);
        EXPECT_EQ(start->dataStart, 200000);
    }
}
