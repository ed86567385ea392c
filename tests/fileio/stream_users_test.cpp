/// The count of users, of both kinds of streams.
#include "fileio/buffered_file_stream.h"
#include "fileio/file_stream.h"

#include "support/test_files.h"

#include <atomic>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

using trnmpa::CBufferedFileStream;
using trnmpa::CFileStream;
using trnmpa::IFileStream;

class BufferedNothing : public CBufferedFileStream {
public:
    BufferedNothing() : CBufferedFileStream(nullptr, 8) {}
};

/// Says when it is destroyed.
template <typename Stream>
class Mortal : public Stream {
public:
    explicit Mortal(std::atomic<int>& deaths) : deaths_(deaths) {}
    ~Mortal() override { ++deaths_; }

private:
    std::atomic<int>& deaths_;
};

template <typename Stream>
class StreamUsers : public testing::Test {
protected:
    std::atomic<int> deaths_ = 0;
    IFileStream* const stream_ = new Mortal<Stream>(deaths_);
};

using Streams = testing::Types<CFileStream, BufferedNothing>;
TYPED_TEST_SUITE(StreamUsers, Streams);

TYPED_TEST(StreamUsers, StartAtNoneAndEndWithTheLast) {
    EXPECT_EQ(this->stream_->GetRef(), 0u);
    EXPECT_EQ(this->stream_->AddRef(), 1u);
    EXPECT_EQ(this->stream_->AddRef(), 2u);
    EXPECT_EQ(this->stream_->GetRef(), 2u);
    EXPECT_EQ(this->stream_->Release(), 1u);
    EXPECT_EQ(this->stream_->GetRef(), 1u);
    EXPECT_EQ(this->deaths_, 0);
    EXPECT_EQ(this->stream_->Release(), 0u);
    EXPECT_EQ(this->deaths_, 1);
}

TYPED_TEST(StreamUsers, OneReleaseTooManyDoesNotDestroy) {
    EXPECT_EQ(this->stream_->Release(), 0xFFFFFFFFu);
    EXPECT_EQ(this->deaths_, 0);
    EXPECT_EQ(this->stream_->AddRef(), 0u);
    EXPECT_EQ(this->stream_->AddRef(), 1u);
    EXPECT_EQ(this->stream_->Release(), 0u);
    EXPECT_EQ(this->deaths_, 1);
}

TYPED_TEST(StreamUsers, ComeAndGoOnSeveralThreads) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 5000;
    for (int thread = 0; thread < kThreads; ++thread)
        this->stream_->AddRef();
    std::atomic<int> last = 0;
    std::atomic<int> impossible = 0;
    const auto use = [&] {
        for (int round = 0; round < kRounds; ++round) {
            impossible += this->stream_->AddRef() < 2;
            const unsigned long count = this->stream_->GetRef();
            impossible += count < 2 || count > 2 * kThreads;
            impossible += this->stream_->Release() < 1;
        }
        last += this->stream_->Release() == 0;
    };
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back(use);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(impossible, 0);
    EXPECT_EQ(last, 1);
    EXPECT_EQ(this->deaths_, 1);
}

TEST(StreamEnd, TheLastReleaseClosesTheFile) {
    const test::ScratchFolder scratch;
    const auto path = scratch.Add("a.mp3", test::Bytes(10));
    IFileStream* const stream = new CFileStream;
    stream->AddRef();
    ASSERT_EQ(stream->Open(test::Wide(path), trnmpa::kStreamReadWrite), 1);
    EXPECT_EQ(stream->Release(), 0u);
    EXPECT_TRUE(std::filesystem::remove(path)) << "Windows removes no file that is open unshared";
}

static_assert(std::has_virtual_destructor_v<IFileStream>);
static_assert(!std::is_copy_constructible_v<CFileStream> && !std::is_copy_assignable_v<CFileStream>);
static_assert(!std::is_copy_constructible_v<CBufferedFileStream>);

} // namespace
