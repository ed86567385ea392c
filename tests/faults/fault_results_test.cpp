/// What a host is told of certain faults, call by call.
#include "faults/fault_layer.h"
#include "reader/reader_streams.h"
#include "trnmpafileread/audio_reader.h"
#include "trnmpafileread/frame_readers.h"
#include "trnmpafileread/index_creator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace {

using namespace test;

class FaultResults : public testing::Test {
protected:
    FaultResults() { TakeOverCalls(); }

    CComBSTR Path() const { return os::ToAutomationString(Wide(media_)); }

    /// Runs one call with the fault in it.
    template <typename Operation>
    static std::int32_t With(std::optional<Fault> fault, Operation&& operation) {
        const FaultLayer layer(fault);
        const FaultLayer::Window window;
        return operation();
    }

    /// The results of a call for each allocation in it that fails; `prepare` goes before each try.
    template <typename Prepare, typename Operation>
    static std::set<std::int32_t> WithoutMemory(Prepare&& prepare, Operation&& operation) {
        std::set<std::int32_t> results;
        for (std::size_t number = 0;; ++number) {
            prepare();
            const FaultLayer layer(Fault{SystemCall::kAllocate, number, FaultLength::kOnce});
            std::int32_t result = 0;
            {
                const FaultLayer::Window window;
                result = operation();
            }
            if (!FaultLayer::Happened())
                return results;
            results.insert(result);
        }
    }

    static std::int32_t Read(TRN_MpAudioFileReader2& reader, std::int64_t start, std::uint32_t count) {
        AudioReaderDataIn request;
        request.startSample = start;
        request.sampleCount = count;
        unsigned char* data = nullptr;
        std::int32_t size = 0;
        return reader.GetSamples(std::move(request), &data, size, nullptr);
    }

    static constexpr Fault kFirstOpen = {SystemCall::kOpen, 0, FaultLength::kOnce};
    static constexpr Fault kAllReads = {SystemCall::kRead, 0, FaultLength::kLasts};
    static constexpr Fault kFirstRead = {SystemCall::kRead, 0, FaultLength::kOnce};

    const ScratchFolder folder_;
    const bitstream::Stream stream_ = SteadyStream(40);
    const std::filesystem::path media_ = folder_.Add("song.mp3", stream_.bytes);
    KW_MEDIA_BASE_INFO_ST info_;
};

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

TEST_F(FaultResults, EachWantOfMemoryHasItsCode) {
    TRN_MpAudioFileReader2 reader;
    const auto nothing = [] {};
    EXPECT_EQ(WithoutMemory(nothing, [&] { return reader.Initialize(); }),
              (std::set<std::int32_t>{1, TRN_AUDIO_READER_NO_ENGINE, TRN_AUDIO_READER_NO_DECODER,
                                      TRN_AUDIO_READER_NO_PCM_BUFFER}))
        << "1 where only settings or log are missing";
    CComBSTR path;
    EXPECT_EQ(WithoutMemory(
                  [&] {
                      ASSERT_EQ(reader.Initialize(), 1);
                      path = Path();
                  },
                  [&] { return reader.SetInputFile(std::move(path)); }),
              std::set<std::int32_t>{TRN_AUDIO_READER_EXCEPTION});
    const std::set<std::int32_t> opened = WithoutMemory(nothing, [&] { return reader.GetItemInfo(&info_); });
    EXPECT_TRUE(opened.empty() || !opened.contains(0)) << "never the result of something else";
}

TEST_F(FaultResults, AReadWithoutMemoryFailsAndTheNextIsWhole) {
    TRN_MpAudioFileReader2 reader;
    ASSERT_EQ(reader.Initialize(), 1);
    ASSERT_EQ(reader.SetInputFile(Path()), 1);
    ASSERT_EQ(reader.GetItemInfo(&info_), 1);
    std::uint32_t count = 4000;
    // More than ever before, so that the buffers must grow.
    const std::set<std::int32_t> results =
        WithoutMemory([&] { count += 1000; }, [&] { return Read(reader, 0, count); });
    EXPECT_TRUE(results.contains(TRN_AUDIO_READER_EXCEPTION));
    for (const std::int32_t result : results)
        EXPECT_TRUE(result == TRN_AUDIO_READER_EXCEPTION || result == 1) << result;
    EXPECT_EQ(Read(reader, 0, 4000), 1);
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

TEST_F(FaultResults, ABuilderWithoutMemoryIsNone) {
    TRN_MpaFileIndexCreator creator;
    EXPECT_EQ(WithoutMemory([] {}, [&] { return creator.Initialize(); }), std::set<std::int32_t>{0});
    TRN_MpaFileIndexCreator failing;
    EXPECT_EQ(
        With(Fault{SystemCall::kAllocate, 2, FaultLength::kLasts}, [&] { return failing.Initialize(); }), 0);
    EXPECT_EQ(failing.SetInputFile(Path()), 0);
    EXPECT_EQ(failing.CreateFileIndex(), 0);
    EXPECT_EQ(failing.Initialize(), 1);
    EXPECT_EQ(failing.SetInputFile(Path()), 1);
}

} // namespace
