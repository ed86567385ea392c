/// Memory that runs out within the plain C functions: every allocation of a call fails once.
#include <gtest/gtest.h>

#include "plugin/c_handles.h"
#include "plugin/failing_memory.h"
#include "reader/reader_streams.h"

namespace {

namespace fs = std::filesystem;
using namespace test;

class CMemory : public testing::Test {
protected:
    /// Runs `call`, which gives a result, until nothing more can fail; each run with another failure.
    template <typename Call, typename Check>
    static void FailEverywhere(Call&& call, Check&& check) {
        ASSERT_EQ(call(), TRNMPA_OK) << "once for what stays for good";
        const std::size_t before = BlocksHeld();
        int failures = 0;
        bool failed = true;
        for (std::size_t number = 0; failed; ++number) {
            trnmpa_result result = TRNMPA_OK;
            {
                const FailingAllocation failing(number);
                result = call();
                failed = failing.HasFailed();
            }
            ASSERT_EQ(BlocksHeld(), before) << "allocation " << number;
            ASSERT_LE(result, TRNMPA_OK);
            failures += result != TRNMPA_OK ? 1 : 0;
            check();
        }
        EXPECT_GT(failures, 3);
        EXPECT_EQ(call(), TRNMPA_OK);
    }
    template <typename Call>
    static void FailEverywhere(Call&& call) {
        FailEverywhere(call, [] {});
    }

    int DeleteLeftOvers() const {
        int count = 0;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder_.Path())) {
            if (entry.path().filename().string().find("song") != 0)
                count += fs::remove(entry.path()) ? 1 : 0;
        }
        return count;
    }

    ScratchFolder folder_;
    const bitstream::Stream stream_ = SteadyStream(10);
    const fs::path song_ = folder_.Add("song.mp3", stream_.bytes);
    const std::string path_ = Utf8Of(song_);
};

} // namespace

TEST_F(CMemory, OpeningAndReading) {
    Pcm pcm(2000);
    FailEverywhere([&] {
        trnmpa_reader* reader = nullptr;
        trnmpa_result result = trnmpa_reader_open_utf8(path_.c_str(), &reader);
        EXPECT_EQ(reader != nullptr, result == TRNMPA_OK);
        if (result == TRNMPA_OK)
            result = trnmpa_reader_read(reader, 500, 1000, pcm.data(), 4000, nullptr);
        trnmpa_reader_close(reader);
        return result;
    });
}

TEST_F(CMemory, OpeningWithAnIndex) {
    folder_.Add("song.mp3.idx", IndexOf(stream_).ToBytes());
    FailEverywhere([&] {
        trnmpa_reader* reader = nullptr;
        const trnmpa_result result = trnmpa_reader_open_utf8(path_.c_str(), &reader);
        EXPECT_EQ(reader != nullptr, result == TRNMPA_OK);
        trnmpa_reader_close(reader);
        return result;
    });
}

TEST_F(CMemory, Slices) {
    auto options = Sized<trnmpa_slice_options>();
    options.sample_rate = 48000;
    FailEverywhere([&] {
        trnmpa_slices* slices = nullptr;
        trnmpa_result result = trnmpa_slices_open_utf8(path_.c_str(), &options, &slices);
        EXPECT_EQ(slices != nullptr, result == TRNMPA_OK);
        auto slice = Sized<trnmpa_slice>();
        if (result == TRNMPA_OK)
            result = trnmpa_slices_next(slices, &slice);
        trnmpa_slices_close(slices);
        return result;
    });
}

TEST_F(CMemory, BuildingAnIndex) {
    const fs::path index = folder_.Path() / "song.mp3.idx";
    const Bytes good = IndexOf(stream_).ToBytes();
    int leftOvers = 0;
    FailEverywhere([&] { return trnmpa_index_build_utf8(path_.c_str(), nullptr, nullptr, nullptr); },
                   [&] {
                       ASSERT_EQ(ReadFile(index), good) << "whatever happened";
                       leftOvers += DeleteLeftOvers();
                   });
    EXPECT_LE(leftOvers, 2) << "just where there was no memory to delete it";
}
