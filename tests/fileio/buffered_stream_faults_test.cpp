/// Buffered streams over inner streams that fail, lie or are not there, and at positions near the limits.
#include "fileio/buffered_file_stream.h"

#include "fileio/array_memory.h"
#include "fileio/recording_stream.h"
#include "platform/path_samples.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using test::Bytes;
using trnmpa::CBufferedFileStream;
using trnmpa::kSeekFromEnd;
using trnmpa::kSeekFromPosition;
using trnmpa::kSeekFromStart;
using trnmpa::kTransferFailed;

using Calls = std::vector<std::string>;

constexpr std::int64_t kFirst = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kLast = std::numeric_limits<std::int64_t>::max();

class BufferedStreamFaults : public testing::Test {
protected:
    std::uint32_t Read(std::uint32_t count) { return stream_.Read(bytes_.data(), count); }

    const Bytes content_ = test::NumberedBytes(100);
    test::RecordingStream inner_{content_};
    CBufferedFileStream stream_{&inner_, 8};
    Bytes bytes_ = Bytes(100);
};

TEST_F(BufferedStreamFaults, AFailedFillLeavesNothingValid) {
    Read(4);
    stream_.Seek(6, kSeekFromStart);
    inner_.failsToRead = true;
    EXPECT_EQ(Read(5), kTransferFailed);
    EXPECT_EQ(stream_.GetPosition(), 6);
    inner_.failsToRead = false;
    inner_.TakeCalls();
    EXPECT_EQ(Read(1), 1u);
    EXPECT_EQ(bytes_[0], content_[6]);
    EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 6 0", "read 8"})) << "nothing of the buffer was left";
    stream_.Seek(0, kSeekFromStart);
    EXPECT_EQ(Read(1), 1u);
    EXPECT_EQ(bytes_[0], content_[0]);
}

TEST_F(BufferedStreamFaults, AFillThatCannotSeekReadsNothing) {
    Read(4);
    stream_.Seek(6, kSeekFromStart);
    inner_.TakeCalls();
    inner_.failsToSeek = true;
    EXPECT_EQ(Read(5), kTransferFailed);
    EXPECT_EQ(inner_.TakeCalls(), Calls{"seek 6 0"});
    EXPECT_EQ(stream_.GetPosition(), 6);
    EXPECT_EQ(Read(1), kTransferFailed) << "nothing of the buffer was left";
    inner_.failsToSeek = false;
    EXPECT_EQ(Read(1), 1u);
    EXPECT_EQ(bytes_[0], content_[6]);
}

TEST_F(BufferedStreamFaults, AFillThatThrowsLeavesNothingValid) {
    Read(4);
    stream_.Seek(6, kSeekFromStart);
    inner_.throwsOnRead = true;
    EXPECT_THROW(Read(5), std::runtime_error);
    inner_.throwsOnRead = false;
    EXPECT_EQ(stream_.GetPosition(), 6);
    EXPECT_EQ(Read(1), 1u);
    EXPECT_EQ(bytes_[0], content_[6]);
}

TEST_F(BufferedStreamFaults, AFailedStraightReadCountsItsResult) {
    Read(4);
    inner_.failsToRead = true;
    EXPECT_EQ(Read(9), kTransferFailed);
    EXPECT_EQ(stream_.GetPosition(), 4 + std::int64_t{kTransferFailed});
    stream_.Seek(0, kSeekFromStart);
    inner_.TakeCalls();
    EXPECT_EQ(Read(8), 8u) << "the buffer stays";
    EXPECT_EQ(inner_.TakeCalls(), Calls{});
    inner_.failsToSeek = true;
    EXPECT_EQ(Read(9), kTransferFailed);
    EXPECT_EQ(inner_.TakeCalls(), Calls{"seek 8 0"});
    EXPECT_EQ(stream_.GetPosition(), 8) << "nothing was read";
}

TEST_F(BufferedStreamFaults, AFailedWriteCountsItsResult) {
    Read(4);
    inner_.failsToWrite = true;
    EXPECT_EQ(stream_.Write(bytes_.data(), 2), kTransferFailed);
    EXPECT_EQ(stream_.GetPosition(), 4 + std::int64_t{kTransferFailed});
    inner_.failsToWrite = false;
    stream_.Seek(4, kSeekFromStart);
    inner_.TakeCalls();
    inner_.failsToSeek = true;
    EXPECT_EQ(stream_.Write(bytes_.data(), 2), kTransferFailed);
    EXPECT_EQ(inner_.TakeCalls(), Calls{"seek 4 0"}) << "nothing is written at a place that is not known";
    EXPECT_EQ(stream_.GetPosition(), 4);
    EXPECT_EQ(inner_.content, content_);
}

TEST_F(BufferedStreamFaults, AfterAFailedSeekEveryTransferFails) {
    Read(4);
    EXPECT_EQ(stream_.Seek(-5, kSeekFromStart), -1);
    EXPECT_EQ(stream_.GetPosition(), -1);
    EXPECT_EQ(Read(1), kTransferFailed);
    EXPECT_EQ(Read(50), kTransferFailed);
    EXPECT_EQ(stream_.Write(bytes_.data(), 1), kTransferFailed);
    EXPECT_EQ(stream_.GetPosition(), -1);
    EXPECT_EQ(stream_.Seek(3, kSeekFromStart), 3);
    EXPECT_EQ(Read(1), 1u);
    EXPECT_EQ(bytes_[0], content_[3]);
    EXPECT_EQ(inner_.content, content_);
}

TEST_F(BufferedStreamFaults, PositionsSaturate) {
    inner_.isEndless = true;
    EXPECT_EQ(stream_.Seek(kLast, kSeekFromStart), kLast);
    EXPECT_EQ(stream_.Seek(1, kSeekFromPosition), kLast);
    EXPECT_EQ(stream_.Seek(kLast, kSeekFromPosition), kLast);
    EXPECT_EQ(Read(5), 5u);
    EXPECT_EQ(stream_.GetPosition(), kLast);
    EXPECT_EQ(Read(50), 50u);
    EXPECT_EQ(stream_.GetPosition(), kLast);
    inner_.failsToRead = true;
    EXPECT_EQ(Read(50), kTransferFailed);
    EXPECT_EQ(stream_.GetPosition(), kLast);
    inner_.TakeCalls();
    EXPECT_EQ(stream_.Seek(kFirst, kSeekFromPosition), -1);
    EXPECT_EQ(inner_.TakeCalls(), Calls{"seek -1 0"});
    EXPECT_EQ(stream_.Seek(kFirst, kSeekFromPosition), -1);
    EXPECT_EQ(inner_.TakeCalls(), Calls{"seek " + std::to_string(kFirst) + " 0"});
}

TEST_F(BufferedStreamFaults, TheBufferReachesBeyondTheLastPosition) {
    inner_.isEndless = true;
    stream_.Seek(kLast - 3, kSeekFromStart);
    EXPECT_EQ(Read(2), 2u);
    EXPECT_EQ(stream_.GetPosition(), kLast - 1);
    inner_.TakeCalls();
    EXPECT_EQ(Read(6), 6u);
    EXPECT_EQ(inner_.TakeCalls(), Calls{});
    EXPECT_EQ(stream_.GetPosition(), kLast);
    stream_.Seek(0, kSeekFromStart);
    EXPECT_EQ(Read(1), 1u);
    EXPECT_EQ(stream_.GetPosition(), 1);
}

TEST_F(BufferedStreamFaults, AnInnerStreamThatGaveMoreThanAskedIsNotBelieved) {
    inner_.extraBytes = 1000;
    EXPECT_EQ(Read(3), 3u);
    inner_.TakeCalls();
    EXPECT_EQ(Read(5), 5u);
    EXPECT_EQ(inner_.TakeCalls(), Calls{});
    EXPECT_EQ(Read(1), 1u);
    EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 8 0", "read 8"}));
    EXPECT_EQ(bytes_[0], content_[8]);
}

TEST_F(BufferedStreamFaults, NullBuffersAreErrorsThatMoveNothing) {
    Read(4);
    inner_.TakeCalls();
    for (const std::uint32_t count : {1u, 8u, 9u, 0xFFFFFFFFu}) {
        EXPECT_EQ(stream_.Read(nullptr, count), kTransferFailed);
        EXPECT_EQ(stream_.Write(nullptr, count), kTransferFailed);
    }
    EXPECT_EQ(inner_.TakeCalls(), Calls{});
    EXPECT_EQ(stream_.GetPosition(), 4);
}

TEST_F(BufferedStreamFaults, WithoutAnInnerStreamNothingIsEverOpen) {
    CBufferedFileStream stream(nullptr, 8);
    EXPECT_EQ(stream.Open(L"a", 0), 0);
    EXPECT_EQ(stream.Close(), 0);
    EXPECT_EQ(stream.Read(bytes_.data(), 4), 0u);
    EXPECT_EQ(stream.Read(bytes_.data(), 50), 0u);
    EXPECT_EQ(stream.Read(nullptr, 4), 0u);
    EXPECT_EQ(stream.Write(bytes_.data(), 4), 0u);
    for (const std::uint32_t origin : {kSeekFromStart, kSeekFromPosition, kSeekFromEnd})
        EXPECT_EQ(stream.Seek(4, origin), 0);
    EXPECT_EQ(stream.GetLength(), 0);
    EXPECT_EQ(stream.GetPosition(), 0);
}

TEST_F(BufferedStreamFaults, SizesBelowOneCountAsOne) {
    for (const std::int32_t size : {1, 0, -1, std::numeric_limits<std::int32_t>::min()}) {
        CBufferedFileStream stream(&inner_, size);
        inner_.TakeCalls();
        EXPECT_EQ(stream.Read(bytes_.data(), 1), 1u);
        EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 0 0", "read 1"}));
        EXPECT_EQ(stream.Read(bytes_.data(), 2), 2u);
        EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 1 0", "read 2"}));
    }
}

TEST_F(BufferedStreamFaults, WithoutMemoryTheBufferIsOneByte) {
    const test::ArrayMemoryLimit limit(1000);
    CBufferedFileStream stream(&inner_, 1001);
    EXPECT_EQ(stream.Open(L"a", 0), 1);
    inner_.TakeCalls();
    EXPECT_EQ(stream.Read(bytes_.data(), 1), 1u);
    EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 0 0", "read 1"}));
    EXPECT_EQ(stream.Read(bytes_.data(), 99), 99u);
    EXPECT_EQ(inner_.TakeCalls(), (Calls{"seek 1 0", "read 99"}));
    EXPECT_TRUE(std::equal(content_.begin() + 1, content_.end(), bytes_.begin()));
}

TEST_F(BufferedStreamFaults, WithoutAnyMemoryThereIsNoStream) {
    const test::ArrayMemoryLimit limit(0);
    EXPECT_THROW(CBufferedFileStream(&inner_, 8), std::bad_alloc);
}

} // namespace
