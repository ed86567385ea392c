/// Files of 2 to 5 GiB, all holes but for runs of frames at the places that are looked at.
#include "faults/fault_layer.h"
#include "reader/reader_streams.h"
#include "support/loaded_module.h"
#include "trnmpafileread/audio_reader.h"
#include "trnmpafileread/frame_readers.h"
#include "trnmpafileread/index_creator.h"
#include "trnmpafileread/plugin.h"

#include "os/output_file.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

using namespace test;
namespace fs = std::filesystem;

constexpr std::int64_t kGiB = std::int64_t{1} << 30;
constexpr std::int64_t kFrameBytes = 576; // layer II, 192 kbit/s, 48000 Hz
constexpr std::int64_t kFrameSamples = 1152;
constexpr std::int64_t kRate = 48'000;
constexpr std::int64_t kRunFrames = 20;

class LargeFiles : public testing::Test {
protected:
    LargeFiles() { TakeOverCalls(); }

    /// A file of `frames` frames, with the run where each of `places` (frame numbers) says.
    fs::path Make(std::int64_t frames, const std::vector<std::int64_t>& places, std::int64_t tail = 0) const {
        const fs::path path = folder_.Path() / "large.mp2";
        os::OutputFile file;
        const Bytes end(1);
        bool isGood = file.CreateAlways(Wide(path));
        isGood = isGood && file.SetPosition(frames * kFrameBytes + tail - 1) &&
                 file.Write(end) == os::WriteResult::kDone;
        for (const std::int64_t place : places)
            isGood = isGood && file.SetPosition(place * kFrameBytes) &&
                     file.Write(run_.bytes) == os::WriteResult::kDone;
        if (!isGood || !file.Close())
            throw std::runtime_error("no large file");
        return path;
    }

    /// Where the probe, a reader and the end of the file want frames; besides, around 2 and 4 GiB.
    static std::vector<std::int64_t> Places(std::int64_t frames) {
        std::vector<std::int64_t> places = {0, frames / 4, frames / 2, frames * 3 / 4, frames - kRunFrames};
        for (const std::int64_t boundary : {2 * kGiB, 4 * kGiB})
            if (boundary / kFrameBytes + kRunFrames < frames)
                places.push_back(boundary / kFrameBytes - kRunFrames / 2);
        return places;
    }

    /// PCM of the run alone, from its frame `frame` on.
    Pcm OfRun(std::int64_t frame, std::uint32_t count) const {
        LoadedModule module;
        const auto reader = module.OpenForReading(runPath_);
        return ReadPcm(*reader, frame * kFrameSamples, count).value_or(Pcm());
    }

    void ExpectSamples(const fs::path& path, std::int64_t frames) {
        LoadedModule module;
        const FaultLayer counting;
        const FaultLayer::Window window;
        const auto reader = module.CreateReader();
        ASSERT_EQ(reader->OpenFile(Wide(path), TRN_OPEN_PROBE | TRN_OPEN_SAMPLE_READER), 1);
        TRN_MEDIA_INFO2 info;
        ASSERT_EQ(reader->GetFileInfo(TRN_FILE_INFO_PROBE, &info), 1);
        EXPECT_EQ(info.fileSize, frames * kFrameBytes);
        EXPECT_NEAR(static_cast<double>(info.duration),
                    static_cast<double>(frames * kFrameSamples) * 1e7 / static_cast<double>(kRate), 2.0);
        for (const std::int64_t place : Places(frames))
            EXPECT_EQ(ReadPcm(*reader, (place + 8) * kFrameSamples, 3000), OfRun(8, 3000))
                << "frame " << place;
        EXPECT_LT(FaultLayer::Count(SystemCall::kRead), 200U) << "never more than what is asked for";
    }

    void ExpectSlices(const fs::path& path, std::int64_t frames) {
        constexpr std::int64_t kSliceSamples = 1920; // 40 ms
        TRN_MpAudioFileReader reader;
        ASSERT_EQ(reader.Initialize(), 1);
        ASSERT_EQ(reader.SetInputFile(os::ToAutomationString(Wide(path))), 1);
        ASSERT_EQ(reader.StartRead(), 1);
        LoadedModule module;
        const auto run = module.OpenForReading(runPath_);
        for (const std::int64_t place : Places(frames)) {
            const std::int64_t slice = (place + 10) * kFrameSamples / kSliceSamples;
            ASSERT_EQ(reader.SeekTo(static_cast<std::uint32_t>(slice)), 1);
            unsigned char* data = nullptr;
            std::int32_t length = 0;
            std::int32_t atEnd = 0;
            ASSERT_EQ(reader.ReadFrame(&data, length, nullptr, atEnd), 1) << place;
            Pcm pcm(static_cast<std::size_t>(length) / 2);
            std::memcpy(pcm.data(), data, static_cast<std::size_t>(length));
            EXPECT_EQ(pcm, ReadPcm(*run, slice * kSliceSamples - place * kFrameSamples, kSliceSamples))
                << place;
        }
    }

    const ScratchFolder folder_;
    const bitstream::Stream run_ = Layer2Stream(static_cast<int>(kRunFrames));
    const fs::path runPath_ = folder_.Add("run.mp2", run_.bytes);
};

TEST_F(LargeFiles, TheRunIsAsTheTestTakesIt) {
    EXPECT_EQ(std::ssize(run_.bytes), kRunFrames * kFrameBytes);
    EXPECT_EQ(OfRun(8, 3000).size(), 6000U);
    EXPECT_NE(OfRun(8, 3000), OfRun(9, 3000));
}

TEST_F(LargeFiles, BetweenTwoAndFourGiBAllIsRead) {
    const std::int64_t frames = 7 * kGiB / 2 / kFrameBytes;
    const fs::path path = Make(frames, Places(frames));
    ExpectSamples(path, frames);
    ExpectSlices(path, frames);
}

TEST_F(LargeFiles, AboveFourGiBConstantBitRateIsRead) {
    const std::int64_t frames = 5 * kGiB / kFrameBytes;
    const fs::path path = Make(frames, Places(frames));
    ExpectSamples(path, frames);
    ExpectSlices(path, frames);
}

TEST_F(LargeFiles, PlacesAreToldUpToFourGiB) {
    const std::int64_t frames = 5 * kGiB / kFrameBytes;
    const fs::path path = Make(frames, {0, frames / 2});
    TRN_MpaFileCompReader reader;
    ASSERT_EQ(reader.SetInputFile(os::ToAutomationString(Wide(path))), 1);
    ASSERT_EQ(reader.StartRead(), 1);
    for (const std::int64_t frame : {2 * kGiB / kFrameBytes + 1, 3 * kGiB / kFrameBytes}) {
        unsigned long position = 0;
        // In the middle of the frame.
        const std::int64_t time = (frame * kFrameSamples + 576) * 10'000'000 / kRate;
        ASSERT_EQ(reader.SeekTo(time, position), 1);
        EXPECT_EQ(static_cast<std::int64_t>(position), frame * kFrameBytes);
    }
    unsigned long position = 0;
    ASSERT_EQ(reader.SeekTo((frames - 1) * kFrameSamples * 10'000'000 / kRate, position), 1);
    EXPECT_EQ(position, 0xFFFFFFFFUL) << "more than the answer can say";
}

TEST_F(LargeFiles, AnIndexLeadsBeyondTwoGiB) {
    const std::int64_t first = 7 * kGiB / 2 / kFrameBytes;
    const fs::path path = Make(first + kRunFrames, {0, first});
    folder_.Add("large.mp2.idx", IndexOf(run_, static_cast<std::size_t>(first * kFrameBytes)).ToBytes());
    folder_.Add("run.mp2.idx", IndexOf(run_).ToBytes());
    LoadedModule module;
    const auto large = module.OpenForReading(path);
    const auto small = module.OpenForReading(runPath_);
    ASSERT_TRUE(large != nullptr && small != nullptr);
    for (const std::int64_t start : {0, 12'000, 5000}) {
        const auto expected = ReadPcm(*small, start, 2000);
        ASSERT_TRUE(expected);
        EXPECT_EQ(ReadPcm(*large, start, 2000), expected) << start;
    }
    TRN_MpAudioFileReader slices;
    ASSERT_EQ(slices.Initialize(), 1);
    ASSERT_EQ(slices.SetInputFile(os::ToAutomationString(Wide(path))), 1);
    ASSERT_EQ(slices.StartRead(), 1);
    ASSERT_EQ(slices.SeekTo(6), 1);
    unsigned char* data = nullptr;
    std::int32_t length = 0;
    std::int32_t atEnd = 0;
    ASSERT_EQ(slices.ReadFrame(&data, length, nullptr, atEnd), 1);
    Pcm pcm(static_cast<std::size_t>(length) / 2);
    std::memcpy(pcm.data(), data, static_cast<std::size_t>(length));
    EXPECT_EQ(pcm, ReadPcm(*small, 6 * 1920, 1920));
}

TEST_F(LargeFiles, FourGiBAreNotIndexedAndTheIndexThereStays) {
    const std::int64_t frames = 4 * kGiB / kFrameBytes;
    const std::int64_t tail = 4 * kGiB - frames * kFrameBytes;
    for (const std::int64_t more : {std::int64_t{0}, kGiB}) {
        const fs::path path = Make(frames, {0}, tail + more);
        const Bytes present(100, 0xAB);
        folder_.Add("large.mp2.idx", present);
        TRN_MpaFileIndexCreator creator;
        ASSERT_EQ(creator.Initialize(), 1);
        EXPECT_EQ(creator.SetInputFile(os::ToAutomationString(Wide(path))), 0);
        EXPECT_EQ(creator.CreateFileIndex(), 1);
        PROGRESS_INFO progress = {};
        EXPECT_EQ(creator.GetFileIdxingProgress(progress), 1);
        EXPECT_EQ(progress.state, TRN_INDEX_FAILED);
        EXPECT_EQ(ReadFile(folder_.Path() / "large.mp2.idx"), present);
    }
    const fs::path path = Make(frames, {0}, tail - 1);
    TRN_MpaFileIndexCreator creator;
    ASSERT_EQ(creator.Initialize(), 1);
    EXPECT_EQ(creator.SetInputFile(os::ToAutomationString(Wide(path))), 1) << "a byte less";
    EXPECT_EQ(creator.CreateFileIndex(), 1);
    const Index expected = IndexOf(run_);
    const Bytes index = ReadFile(folder_.Path() / "large.mp2.idx");
    ASSERT_EQ(index.size(), expected.ToBytes().size());
    EXPECT_EQ(Bytes(index.begin() + 4, index.begin() + 8), Bytes(4, 0xFF)) << "its size";
    EXPECT_EQ(Bytes(index.begin() + 8, index.end()), [&] {
        auto all = expected.ToBytes();
        return Bytes(all.begin() + 8, all.end());
    }());
}

} // namespace
