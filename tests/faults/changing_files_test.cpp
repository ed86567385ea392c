/// Files that shrink, vanish or are replaced while the module has them open, and no handle left behind.
#include "faults/fault_layer.h"
#include "faults/module_walk.h"
#include "reader/reader_streams.h"
#include "support/loaded_module.h"
#include "trnmpafileread/frame_readers.h"
#include "trnmpafileread/index_creator.h"
#include "trnmpafileread/plugin.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <system_error>
#include <vector>

namespace {

using namespace test;
namespace fs = std::filesystem;
using Module = std::unique_ptr<PLUGIN_FILE_READER_MODULE>;
using Reader = std::unique_ptr<PLUGIN_FILE_READER_CLASS>;

class ChangingFiles : public testing::Test {
protected:
    Reader Open(std::uint32_t flags) {
        PLUGIN_FILE_READER_CLASS* reader = nullptr;
        EXPECT_EQ(module_->CreateReaderClass(TRN_CLASS_MPEG_AUDIO_LAYER_3, &reader), 1);
        opened_ = reader->OpenFile(Wide(media_), flags);
        return Reader(reader);
    }

    static bool IsSilence(const Pcm& pcm) {
        return std::ranges::all_of(pcm, [](std::int16_t sample) { return sample == 0; });
    }

    const ScratchFolder folder_;
    const bitstream::Stream stream_ = SteadyStream(40);
    const fs::path media_ = folder_.Add("song.mp3", stream_.bytes);
    const fs::path index_ = folder_.Path() / "song.mp3.idx";
    const Module module_{GetPluginReadModule()};
    std::int32_t opened_ = 0;
};

TEST_F(ChangingFiles, WhatIsCutOffIsSilence) {
    const Reader reader = Open(TRN_OPEN_SAMPLE_READER);
    ASSERT_EQ(opened_, 1);
    const auto before = ReadPcm(*reader, 1000, 500);
    std::error_code refused; // some systems keep an open file from being cut
    fs::resize_file(media_, 6000, refused);
    if (!refused) {
        const auto behind = ReadPcm(*reader, 40'000, 500);
        ASSERT_TRUE(behind);
        EXPECT_EQ(behind->size(), 1000U);
        EXPECT_TRUE(IsSilence(*behind));
    }
    EXPECT_EQ(ReadPcm(*reader, 1000, 500), before);
    WriteFile(media_, stream_.bytes);
    const auto again = ReadPcm(*reader, 30'000, 500);
    ASSERT_TRUE(again);
    EXPECT_FALSE(IsSilence(*again)) << "it is there once more";
}

TEST_F(ChangingFiles, AFileThatIsCutToNothingIsSilence) {
    const Reader reader = Open(TRN_OPEN_SAMPLE_READER);
    std::error_code refused;
    fs::resize_file(media_, 0, refused);
    for (const std::int64_t start : {30'000, 0, 500}) {
        const auto pcm = ReadPcm(*reader, start, 500);
        ASSERT_TRUE(pcm);
        EXPECT_EQ(pcm->size(), 1000U);
    }
}

TEST_F(ChangingFiles, AFileThatVanishesStaysReadable) {
    const Reader reader = Open(TRN_OPEN_SAMPLE_READER);
    const auto before = ReadPcm(*reader, 20'000, 500);
    std::error_code refused;
    fs::remove(media_, refused);
    EXPECT_EQ(ReadPcm(*reader, 1000, 500)->size(), 1000U);
    EXPECT_EQ(ReadPcm(*reader, 20'000, 500), before);
}

TEST_F(ChangingFiles, AnotherIndexMeansNothingToAnOpenReader) {
    folder_.Add("song.mp3.idx", IndexOf(stream_).ToBytes());
    const Reader reader = Open(TRN_OPEN_SAMPLE_READER);
    const auto before = ReadPcm(*reader, 20'000, 500);
    for (const std::size_t bytes : {std::size_t{0}, std::size_t{28}, std::size_t{100}}) {
        WriteFile(index_, Bytes(bytes, 0xFF));
        EXPECT_EQ(ReadPcm(*reader, 1000, 500)->size(), 1000U);
        EXPECT_EQ(ReadPcm(*reader, 20'000, 500), before);
    }
    EXPECT_EQ(Open(TRN_OPEN_INDEX_BUILDER)->CreateFileIndex(), 1);
    EXPECT_EQ(ReadPcm(*reader, 20'000, 500), before);
}

TEST_F(ChangingFiles, ASliceReaderGetsToTheNewEnd) {
    for (const bool hasIndex : {false, true}) {
        WriteFile(media_, stream_.bytes);
        if (hasIndex)
            WriteFile(index_, IndexOf(stream_).ToBytes());
        TRN_MpAudioFileReader reader;
        ASSERT_EQ(reader.Initialize(), 1);
        ASSERT_EQ(reader.SetInputFile(os::ToAutomationString(Wide(media_))), 1);
        ASSERT_EQ(reader.StartRead(), 1);
        std::error_code refused;
        fs::resize_file(media_, 9000, refused);
        unsigned char* data = nullptr;
        std::int32_t length = 0;
        std::int32_t atEnd = 0;
        int slices = 0;
        while (slices < 1000 && reader.ReadFrame(&data, length, nullptr, atEnd) == 1)
            ++slices;
        EXPECT_LT(slices, 30);
        EXPECT_EQ(atEnd, 1);
        reader.SeekTo(20);
        EXPECT_EQ(reader.ReadFrame(&data, length, nullptr, atEnd), refused ? 1 : 0);
    }
}

/// The scan ends where the file now does: what is there is indexed.
TEST_F(ChangingFiles, ABuilderEndsWithItsFile) {
    TRN_MpaFileIndexCreator creator;
    ASSERT_EQ(creator.Initialize(), 1);
    Bytes longer;
    for (int i = 0; i < 60; ++i)
        longer.insert(longer.end(), stream_.bytes.begin(), stream_.bytes.end());
    WriteFile(media_, longer);
    ASSERT_EQ(creator.SetInputFile(os::ToAutomationString(Wide(media_))), 1);
    std::error_code refused;
    fs::resize_file(media_, 300'000, refused);
    EXPECT_EQ(creator.CreateFileIndex(), 1);
    PROGRESS_INFO progress = {};
    ASSERT_EQ(creator.GetFileIdxingProgress(progress), 1);
    EXPECT_EQ(progress.state, TRN_INDEX_FINISHED);
    EXPECT_EQ(fs::file_size(index_), 28 + std::uintmax_t{8} * progress.framesIndexed);
}

/// Every way in and out, again and again: as many handles as before.
TEST_F(ChangingFiles, NoHandleIsLeftOpen) {
    const auto noise = folder_.Add("noise.mp3", Bytes(20'000, 0x11));
    const std::vector<std::function<void()>> ways = {
        [&] { Open(TRN_OPEN_PROBE | TRN_OPEN_SAMPLE_READER); },
        [&] { Open(TRN_OPEN_PROBE | TRN_OPEN_SAMPLE_READER | TRN_OPEN_INDEX_BUILDER)->CreateFileIndex(); },
        [&] { // with the index that was just built, and on another file in between
            const Reader reader = Open(TRN_OPEN_SAMPLE_READER);
            EXPECT_TRUE(ReadPcm(*reader, 20'000, 100));
            EXPECT_EQ(reader->OpenFile(Wide(noise), 15), 0);
            EXPECT_EQ(reader->OpenFile(L"", 15), 0);
            EXPECT_EQ(reader->OpenFile(Wide(media_), 15), 1);
        },
        [&] { // refused
            fs::remove(index_);
            fs::create_directory(index_);
            Open(15);
            fs::remove(index_);
        },
        [&] { // cancelled before and after
            TRN_MpaFileIndexCreator creator;
            for (int i = 0; i < 2; ++i) {
                creator.Initialize();
                creator.SetInputFile(os::ToAutomationString(Wide(media_)));
                creator.CancelIndexing();
                creator.CreateFileIndex();
                creator.CancelIndexing();
            }
            creator.Initialize();
            creator.SetInputFile(os::ToAutomationString(Wide(media_)));
        },
        [&] {
            for (const bool converts : {false, true})
                WalkSlices(media_, converts)->Run();
            WalkPlaces(media_)->Run();
            WalkSamples(media_)->Run();
        },
    };
    for (const auto& way : ways)
        way();
    const std::size_t before = OpenHandles();
    for (int round = 0; round < 3; ++round)
        for (std::size_t i = 0; i < ways.size(); ++i) {
            ways[i]();
            EXPECT_EQ(OpenHandles(), before) << i;
        }
    const Reader reader = Open(TRN_OPEN_SAMPLE_READER);
    EXPECT_GT(OpenHandles(), before) << "the counting counts";
}

} // namespace
