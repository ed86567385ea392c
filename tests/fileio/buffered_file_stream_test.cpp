#include "fileio/buffered_file_stream.h"

#include "fileio/recording_stream.h"
#include "platform/path_samples.h"
#include "support/test_files.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using test::Bytes;
using trnmpa::CBufferedFileStream;
using trnmpa::kSeekFromEnd;
using trnmpa::kSeekFromPosition;
using trnmpa::kSeekFromStart;

using Calls = std::vector<std::string>;

class BufferedFileStream : public testing::Test {
protected:
    /// The next `count` bytes, fewer at the end.
    Bytes Read(std::uint32_t count) {
        Bytes bytes(count);
        bytes.resize(stream_.Read(bytes.data(), count));
        return bytes;
    }
    Bytes Content(std::size_t start, std::size_t count) const {
        const auto from = content_.begin() + static_cast<std::ptrdiff_t>(start);
        return {from, from + static_cast<std::ptrdiff_t>(count)};
    }

    const Bytes content_ = test::NumberedBytes(100);
    test::RecordingStream inner_{content_};
    CBufferedFileStream stream_{&inner_, 8};
};

TEST_F(BufferedFileStream, ReadsInARowCostOneReadOfAWholeBuffer) {
    test::RecordingStream inner(test::NumberedBytes(1000));
    CBufferedFileStream stream(&inner, 512);
    Bytes first(100);
    Bytes second(100);
    EXPECT_EQ(stream.Read(first.data(), 100), 100u);
    EXPECT_EQ(stream.Read(second.data(), 100), 100u);
    EXPECT_EQ(inner.TakeCalls(), (Calls{"seek 0 0", "read 512"}));
    EXPECT_EQ(first, Bytes(inner.content.begin(), inner.content.begin() + 100));
    EXPECT_EQ(second, Bytes(inner.content.begin() + 100, inner.content.begin() + 200));
    EXPECT_EQ(stream.GetPosition(), 200);
}

TEST_F(BufferedFileStream, ServesTheLastByteOfTheBuffer) {
    Read(3);
    inner_.TakeCalls();
    EXPECT_EQ(Read(5), Content(3, 5));
    EXPECT_EQ(inner_.TakeCalls(), Calls{});
    EXPECT_EQ(Read(1), Content(8, 1));
    EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 8 0", "read 8"}));
}

TEST_F(BufferedFileStream, WhatReachesBeyondTheBufferIsReadAnew) {
    Read(6);
    inner_.TakeCalls();
    EXPECT_EQ(Read(3), Content(6, 3));
    EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 6 0", "read 8"}));
    EXPECT_EQ(Read(5), Content(9, 5));
    EXPECT_EQ(inner_.TakeCalls(), Calls{});
}

TEST_F(BufferedFileStream, AReadOfTheBuffersSizeFillsIt) {
    EXPECT_EQ(Read(8), Content(0, 8));
    EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 0 0", "read 8"}));
    stream_.Seek(0, kSeekFromStart);
    inner_.TakeCalls();
    EXPECT_EQ(Read(8), Content(0, 8));
    EXPECT_EQ(inner_.TakeCalls(), Calls{});
}

TEST_F(BufferedFileStream, ALargerReadGoesStraightAndLeavesTheBuffer) {
    Read(2);
    inner_.TakeCalls();
    EXPECT_EQ(Read(9), Content(2, 9));
    EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 2 0", "read 9"}));
    EXPECT_EQ(stream_.GetPosition(), 11);
    stream_.Seek(1, kSeekFromStart);
    inner_.TakeCalls();
    EXPECT_EQ(Read(7), Content(1, 7));
    EXPECT_EQ(inner_.TakeCalls(), Calls{});
}

TEST_F(BufferedFileStream, BeforeTheBufferFillsItAnew) {
    stream_.Seek(50, kSeekFromStart);
    Read(4);
    stream_.Seek(49, kSeekFromStart);
    inner_.TakeCalls();
    EXPECT_EQ(Read(1), Content(49, 1));
    EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 49 0", "read 8"}));
}

TEST_F(BufferedFileStream, StopsAtTheEnd) {
    stream_.Seek(95, kSeekFromStart);
    EXPECT_EQ(Read(8), Content(95, 5));
    EXPECT_EQ(stream_.GetPosition(), 100);
    EXPECT_EQ(Read(1), Bytes{});
    EXPECT_EQ(Read(50), Bytes{});
    stream_.Seek(1000, kSeekFromStart);
    EXPECT_EQ(Read(1), Bytes{});
    EXPECT_EQ(stream_.GetPosition(), 1000);
    stream_.Seek(60, kSeekFromStart);
    EXPECT_EQ(Read(50), Content(60, 40));
    EXPECT_EQ(stream_.GetPosition(), 100);
}

TEST_F(BufferedFileStream, WritesDoNotReachTheBuffer) {
    Read(1);
    stream_.Seek(2, kSeekFromStart);
    const Bytes news = {0xA1, 0xA2};
    EXPECT_EQ(stream_.Write(news.data(), 2), 2u);
    EXPECT_EQ(stream_.GetPosition(), 4);
    EXPECT_EQ(inner_.content[2], 0xA1);
    EXPECT_EQ(inner_.content[3], 0xA2);
    stream_.Seek(2, kSeekFromStart);
    EXPECT_EQ(Read(2), Content(2, 2)) << "as they were when the buffer was filled";
    stream_.Open(L"again", 0);
    stream_.Seek(2, kSeekFromStart);
    EXPECT_EQ(Read(2), news);
}

TEST_F(BufferedFileStream, WritesAtItsOwnPosition) {
    Read(4);
    inner_.TakeCalls();
    const Bytes news = {0xA1, 0xA2, 0xA3};
    EXPECT_EQ(stream_.Write(news.data(), 3), 3u);
    EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 4 0", "write 3"})) << "the inner stream stood at 8";
    EXPECT_EQ(stream_.GetPosition(), 7);
    EXPECT_EQ(Bytes(inner_.content.begin() + 4, inner_.content.begin() + 7), news);
    EXPECT_EQ(inner_.content[8], content_[8]);
}

TEST_F(BufferedFileStream, SeeksFromItsOwnPosition) {
    Read(4);
    inner_.TakeCalls();
    EXPECT_EQ(stream_.Seek(-3, kSeekFromPosition), 1);
    EXPECT_EQ(inner_.TakeCalls(), Calls{"seek 1 0"});
    EXPECT_EQ(stream_.GetPosition(), 1);
    EXPECT_EQ(stream_.Seek(20, kSeekFromPosition), 21);
    EXPECT_EQ(stream_.Seek(0, kSeekFromPosition), 21);
}

TEST_F(BufferedFileStream, OtherOriginsAreForwarded) {
    EXPECT_EQ(stream_.Seek(7, kSeekFromStart), 7);
    EXPECT_EQ(stream_.Seek(-7, kSeekFromEnd), 93);
    EXPECT_EQ(stream_.GetPosition(), 93);
    EXPECT_EQ(stream_.Seek(5, 9), -1);
    EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 7 0", "seek -7 2", "seek 5 9"}));
    stream_.Seek(-7, kSeekFromEnd);
    EXPECT_EQ(Read(2), Content(93, 2));
}

TEST_F(BufferedFileStream, TellsThePositionWithoutAsking) {
    Read(3);
    inner_.TakeCalls();
    EXPECT_EQ(stream_.GetPosition(), 3);
    EXPECT_EQ(inner_.TakeCalls(), Calls{});
}

TEST_F(BufferedFileStream, OpenForwardsAndStartsAnew) {
    for (const int result : {1, 0}) {
        stream_.Seek(20, kSeekFromStart);
        Read(4);
        inner_.TakeCalls();
        inner_.openResult = result;
        EXPECT_EQ(stream_.Open(L"Ünï.mp3", 0x42), result);
        EXPECT_EQ(inner_.TakeCalls(), Calls{"open"});
        EXPECT_EQ(inner_.path, L"Ünï.mp3");
        EXPECT_EQ(inner_.mode, 0x42u);
        EXPECT_EQ(stream_.GetPosition(), 0);
        EXPECT_EQ(Read(1), Content(0, 1));
        EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 0 0", "read 8"}));
    }
}

TEST_F(BufferedFileStream, ForwardsCloseAndLength) {
    Read(2);
    inner_.TakeCalls();
    EXPECT_EQ(stream_.GetLength(), 100);
    EXPECT_EQ(stream_.Close(), 1);
    EXPECT_EQ(inner_.TakeCalls(), (Calls{"length", "close"}));
    EXPECT_EQ(stream_.GetPosition(), 2);
    EXPECT_EQ(Read(6), Content(2, 6)) << "the buffer stays";
}

TEST_F(BufferedFileStream, LeavesTheInnerStreamInTheEnd) {
    {
        CBufferedFileStream stream(&inner_, 8);
        stream.Open(L"a", 0);
        inner_.TakeCalls();
    }
    auto* counted = new CBufferedFileStream(&inner_, 8);
    counted->AddRef();
    EXPECT_EQ(counted->Release(), 0u);
    EXPECT_EQ(inner_.TakeCalls(), Calls{});
}

TEST_F(BufferedFileStream, ZeroBytes) {
    EXPECT_EQ(stream_.Read(nullptr, 0), 0u);
    EXPECT_EQ(inner_.TakeCalls(), Calls{}) << "nothing lies in the empty buffer at 0";
    stream_.Seek(50, kSeekFromStart);
    inner_.TakeCalls();
    EXPECT_EQ(stream_.Read(nullptr, 0), 0u);
    EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 50 0", "read 8"}));
    EXPECT_EQ(stream_.Write(nullptr, 0), 0u);
    EXPECT_EQ(stream_.GetPosition(), 50);
}

TEST_F(BufferedFileStream, RandomReadsGiveTheContent) {
    std::uint32_t state = 7;
    for (int round = 0; round < 2000; ++round) {
        state = state * 1664525u + 1013904223u;
        const std::uint32_t start = (state >> 8) % 110;
        const std::uint32_t count = (state >> 20) % 20;
        ASSERT_EQ(stream_.Seek(start, kSeekFromStart), start);
        const std::size_t from = std::min<std::size_t>(start, 100);
        ASSERT_EQ(Read(count), Content(from, std::min<std::size_t>(count, 100 - from)))
            << start << " " << count;
    }
}

} // namespace
