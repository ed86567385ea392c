/// What a host is told where memory runs out, call by call.
#include "faults/fault_results.h"
#include "trnmpafileread/index_creator.h"

#include <set>

namespace {

using namespace test;

/// The results of a call for each allocation in it that fails; `prepare` goes before each try.
template <typename Prepare, typename Operation>
std::set<std::int32_t> WithoutMemory(Prepare&& prepare, Operation&& operation) {
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
