/// The slice engine with a decoder that throws once, in order and on the way of a jump.
#include "reader/reader_streams.h"
#include "reader/slice_reader.h"
#include "support/loaded_module.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

using namespace test;

constexpr std::int64_t kSliceTime = 400'000;
constexpr int kFault = 17; // any code but that of the end

/// Throws at one of the frames to come.
class FailingFrames final : public trnmpa::BuiltInFrames {
public:
    explicit FailingFrames(int& framesLeft) : framesLeft_(framesLeft) {}

    Outcome Decode(const AMPFrameInfo& stream, std::int16_t* pcm) override {
        if (framesLeft_ >= 0 && framesLeft_-- == 0)
            throw kFault;
        return BuiltInFrames::Decode(stream, pcm);
    }

private:
    int& framesLeft_;
};

class FailingSlices final : public trnmpa::KwMpAudioReader {
public:
    /// Good frames before the fault; negative: there is none to come.
    int framesLeft = -1;

protected:
    std::unique_ptr<trnmpa::BuiltInFrames> CreateFrames() override {
        return std::make_unique<FailingFrames>(framesLeft);
    }
};

struct ReadSliceResult {
    std::int32_t result = 0;
    Bytes bytes;
    bool atEnd = false;
};

class SliceFaults : public testing::Test {
protected:
    void Start(trnmpa::KwMpAudioReader& engine) {
        ASSERT_EQ(engine.Initialize(), 1);
        ASSERT_EQ(engine.SetPerPcmFrameTime(kSliceTime), 1);
        ASSERT_EQ(engine.SetInputFile(Wide(path_)), 1);
        ASSERT_EQ(engine.StartRead(), 1);
    }

    static ReadSliceResult Read(trnmpa::KwMpAudioReader& engine) {
        trnmpa::PcmSlice slice;
        ReadSliceResult read;
        read.result = engine.ReadFrame(slice);
        read.atEnd = slice.atEnd;
        if (slice.data != nullptr)
            read.bytes.assign(slice.data, slice.data + slice.length);
        return read;
    }

    void SetUp() override {
        trnmpa::KwMpAudioReader engine;
        Start(engine);
        for (ReadSliceResult slice = Read(engine); slice.result == 1; slice = Read(engine))
            slices_.push_back(slice.bytes);
        ASSERT_GE(slices_.size(), 20u);
        Start(failing_);
    }

    const ScratchFolder scratch_;
    const std::filesystem::path path_ = scratch_.Add("a.mp3", SteadyStream(40).bytes);
    std::vector<Bytes> slices_;
    FailingSlices failing_;
};

} // namespace

TEST_F(SliceFaults, InOrderTheNextSliceFollows) {
    for (std::uint32_t i = 0; i < 5; ++i)
        ASSERT_EQ(Read(failing_).bytes, slices_[i]);
    failing_.framesLeft = 0;
    const ReadSliceResult faulty = Read(failing_);
    EXPECT_EQ(faulty.result, 0);
    EXPECT_TRUE(faulty.bytes.empty());
    EXPECT_FALSE(faulty.atEnd);
    for (std::uint32_t i = 6; i < 10; ++i)
        EXPECT_EQ(Read(failing_).bytes, slices_[i]) << i;
}

TEST_F(SliceFaults, OnTheWayOfAJumpToo) {
    for (int good = 0; good < 8; ++good) {
        failing_.SeekTo(12);
        failing_.framesLeft = good;
        const ReadSliceResult faulty = Read(failing_);
        ASSERT_EQ(failing_.framesLeft, -1) << "the fault was met";
        EXPECT_TRUE(faulty.bytes.empty());
        EXPECT_FALSE(faulty.atEnd);
        EXPECT_EQ(Read(failing_).bytes, slices_[13]) << good;
        EXPECT_EQ(Read(failing_).bytes, slices_[14]) << good;
    }
}
