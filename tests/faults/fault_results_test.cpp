/// What a host is told of certain faults, call by call.
#include "faults/fault_results.h"
#include "trnmpafileread/frame_readers.h"
#include "trnmpafileread/index_creator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace {

using namespace test;

TEST_F(FaultResults, AMediaFileThatCannotBeOpenedHasNoFirstFrame) {
    TRN_MpAudioFileReader2 reader;
    ASSERT_EQ(reader.Initialize(), 1);
    ASSERT_EQ(reader.SetInputFile(Path()), 1);
    EXPECT_EQ(With(kFirstOpen, [&] { return reader.GetItemInfo(&info_); }), TRN_AUDIO_READER_ANALYSIS_FAILED);
    EXPECT_EQ(With(kAllReads, [&] { return reader.GetItemInfo(&info_); }), TRN_AUDIO_READER_ANALYSIS_FAILED);
    EXPECT_EQ(reader.GetItemInfo(&info_), 1) << "the same object, another time";
}

TEST_F(FaultResults, AnIndexThatCannotBeOpenedKeepsTheFileFromBeingRead) {
    folder_.Add("song.mp3.idx", IndexOf(stream_).ToBytes());
    for (std::size_t number = 0; number < 2; ++number) {
        TRN_MpAudioFileReader2 reader;
        ASSERT_EQ(reader.Initialize(), 1);
        CComBSTR path = Path();
        EXPECT_EQ(With(Fault{SystemCall::kOpen, number, FaultLength::kOnce},
                       [&] { return reader.SetInputFile(std::move(path)); }),
                  0);
        EXPECT_EQ(reader.GetItemInfo(&info_), TRN_AUDIO_READER_MEDIA_NOT_OPENED);
        EXPECT_EQ(reader.SetInputFile(Path()), 1);
        EXPECT_EQ(reader.GetItemInfo(&info_), 1);
    }
}

TEST_F(FaultResults, ReadErrorsOfAnOpenFileAreSilence) {
    TRN_MpAudioFileReader2 reader;
    ASSERT_EQ(reader.Initialize(), 1);
    ASSERT_EQ(reader.SetInputFile(Path()), 1);
    ASSERT_EQ(reader.GetItemInfo(&info_), 1);
    AudioReaderDataIn request;
    request.startSample = 20'000;
    request.sampleCount = 2000;
    unsigned char* data = nullptr;
    std::int32_t size = 0;
    EXPECT_EQ(With(kAllReads, [&] { return reader.GetSamples(std::move(request), &data, size, nullptr); }),
              1);
    ASSERT_EQ(size, 8000);
    EXPECT_TRUE(std::all_of(data, data + size, [](unsigned char byte) { return byte == 0; }));
}

/// A read error must not pass for the end of the stream: the index would look whole.
TEST_F(FaultResults, ABuilderThatCannotReadOnFails) {
    const std::filesystem::path index = folder_.Path() / "song.mp3.idx";
    Bytes longer;
    for (int i = 0; i < 60; ++i)
        longer.insert(longer.end(), stream_.bytes.begin(), stream_.bytes.end());
    WriteFile(media_, longer);
    for (std::size_t number = 0; number < 2; ++number) {
        TRN_MpaFileIndexCreator creator;
        ASSERT_EQ(creator.Initialize(), 1);
        ASSERT_EQ(creator.SetInputFile(Path()), 1);
        EXPECT_EQ(With(Fault{SystemCall::kRead, number, FaultLength::kLasts},
                       [&] { return creator.CreateFileIndex(); }),
                  1);
        PROGRESS_INFO progress = {};
        ASSERT_EQ(creator.GetFileIdxingProgress(progress), 1);
        EXPECT_EQ(progress.state, TRN_INDEX_FAILED) << number;
        const Bytes left = ReadFile(index);
        ASSERT_GE(left.size(), 28U);
        EXPECT_EQ(Bytes(left.begin(), left.begin() + 28), Bytes(28)) << "the placeholder";
    }
    TRN_MpaFileIndexCreator creator;
    ASSERT_EQ(creator.Initialize(), 1);
    CComBSTR path = Path();
    EXPECT_EQ(With(kAllReads, [&] { return creator.SetInputFile(std::move(path)); }), 0);
}

TEST_F(FaultResults, ABuilderReadsOnWhereASecondTryHelps) {
    TRN_MpaFileIndexCreator creator;
    ASSERT_EQ(creator.Initialize(), 1);
    ASSERT_EQ(creator.SetInputFile(Path()), 1);
    EXPECT_EQ(With(kFirstRead, [&] { return creator.CreateFileIndex(); }), 1);
    EXPECT_EQ(ReadFile(folder_.Path() / "song.mp3.idx"), IndexOf(stream_).ToBytes());
}

} // namespace
