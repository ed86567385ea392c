/// The plain C functions that build an index.
#include <gtest/gtest.h>

#include "os/output_file.h"
#include "os/paths.h"
#include "plugin/c_handles.h"
#include "reader/reader_streams.h"

#include <set>

namespace {

namespace fs = std::filesystem;
using namespace test;

/// Notes what it is told; cancels at the call of number `cancelAt`.
struct Listener {
    std::vector<trnmpa_index_progress> calls;
    std::size_t cancelAt = SIZE_MAX;

    static std::int32_t Hear(void* user, const trnmpa_index_progress* progress) {
        auto& self = *static_cast<Listener*>(user);
        self.calls.push_back(*progress);
        return self.calls.size() > self.cancelAt ? -7 : 0;
    }
};

class CIndex : public testing::Test {
protected:
    trnmpa_result Build(const fs::path& media, Listener* listener = nullptr) {
        result_ = Sized<trnmpa_index_progress>();
        return trnmpa_index_build_utf8(Utf8Of(media).c_str(), listener != nullptr ? Listener::Hear : nullptr,
                                       listener, &result_);
    }
    std::set<std::string> Names() const {
        std::set<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder_.Path()))
            names.insert(entry.path().filename().string());
        return names;
    }

    ScratchFolder folder_;
    const bitstream::Stream stream_ = SteadyStream(350);
    const Bytes expected_ = IndexOf(stream_).ToBytes();
    const fs::path song_ = folder_.Add("song.mp3", stream_.bytes);
    const fs::path index_ = folder_.Path() / "song.mp3.idx";
    const std::uint64_t bytes_ = stream_.bytes.size();
    trnmpa_index_progress result_ = {};
};

} // namespace

TEST_F(CIndex, IsBuilt) {
    EXPECT_EQ(Build(song_), TRNMPA_OK);
    EXPECT_EQ(ReadFile(index_), expected_);
    EXPECT_EQ(result_.frames, 349u);
    EXPECT_EQ(result_.bytes_done, bytes_);
    EXPECT_EQ(result_.bytes_total, bytes_);
    EXPECT_EQ(Names(), (std::set<std::string>{"song.mp3", "song.mp3.idx"}));
}

TEST_F(CIndex, ProgressIsTold) {
    Listener listener;
    EXPECT_EQ(Build(song_, &listener), TRNMPA_OK);
    ASSERT_EQ(listener.calls.size(), 5u);
    const std::uint32_t frames[] = {0, 100, 200, 300, 349};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(listener.calls[i].struct_size, sizeof(trnmpa_index_progress));
        EXPECT_EQ(listener.calls[i].frames, frames[i]);
        EXPECT_EQ(listener.calls[i].bytes_done, i == 0 ? 0 : (frames[i] + 1) * bytes_ / 350);
        EXPECT_EQ(listener.calls[i].bytes_total, bytes_);
    }
}

TEST_F(CIndex, ReplacesAnOldOne) {
    WriteFile(index_, Bytes(100, 1));
    EXPECT_EQ(Build(song_), TRNMPA_OK);
    EXPECT_EQ(ReadFile(index_), expected_);
}

TEST_F(CIndex, ACancelledBuildLeavesEverythingAsItWas) {
    for (const std::size_t at : {0u, 2u, 4u}) {
        Listener listener;
        listener.cancelAt = at;
        fs::remove(index_);
        EXPECT_EQ(Build(song_, &listener), TRNMPA_ERROR_CANCELLED);
        EXPECT_EQ(listener.calls.size(), at + 1) << "it is not asked again";
        EXPECT_EQ(result_.frames, listener.calls.back().frames);
        EXPECT_EQ(Names(), std::set<std::string>{"song.mp3"});

        const Bytes old(100, 1);
        WriteFile(index_, old);
        listener.calls.clear();
        EXPECT_EQ(Build(song_, &listener), TRNMPA_ERROR_CANCELLED);
        EXPECT_EQ(ReadFile(index_), old);
        EXPECT_EQ(Names(), (std::set<std::string>{"song.mp3", "song.mp3.idx"}));
    }
    EXPECT_EQ(Build(song_), TRNMPA_OK) << "and can be begun anew";
    EXPECT_EQ(ReadFile(index_), expected_);
}

TEST_F(CIndex, WhatCannotBeIndexedKeepsItsIndex) {
    const Bytes old(100, 1);
    const fs::path noise = folder_.Add("noise.mp3", Bytes(10000));
    folder_.Add("noise.mp3.idx", old);
    EXPECT_EQ(Build(noise), TRNMPA_ERROR_FORMAT);
    EXPECT_EQ(ReadFile(folder_.Path() / "noise.mp3.idx"), old);
    EXPECT_EQ(Build(folder_.Path() / "missing.mp3"), TRNMPA_ERROR_FILE);
    EXPECT_EQ(Build(folder_.Path()), TRNMPA_ERROR_FILE);
    EXPECT_EQ(result_.bytes_total, 0u);
    fs::resize_file(song_, std::uintmax_t{1} << 32);
    EXPECT_EQ(Build(song_), TRNMPA_ERROR_TOO_LARGE);
}

/// Names of unfinished indexes can be foreseen.
TEST_F(CIndex, WhatHasTheNameOfAnUnfinishedIndexStays) {
    const std::string name = os::NarrowToUtf8(os::TemporaryNameBeside(Wide(song_)));
    const std::string start = name.substr(0, name.rfind('-') + 1);
    constexpr int kNames = 50;
    for (int i = 0; i < kNames; ++i)
        WriteFile(fs::path(start + std::to_string(i)), Bytes{7});
    EXPECT_EQ(Build(song_), TRNMPA_OK);
    EXPECT_EQ(ReadFile(index_), expected_);
    for (int i = 0; i < kNames; ++i)
        EXPECT_EQ(ReadFile(fs::path(start + std::to_string(i))), Bytes{7}) << i;
    EXPECT_EQ(Names().size(), kNames + 2U);
}

TEST_F(CIndex, AMediaFileThatIsItsIndexStays) {
    fs::create_hard_link(song_, index_);
    EXPECT_EQ(Build(song_), TRNMPA_OK);
    EXPECT_EQ(ReadFile(song_), stream_.bytes);
    EXPECT_EQ(ReadFile(index_), expected_);
}

TEST_F(CIndex, AFolderInItsPlaceStays) {
    fs::create_directory(index_);
    EXPECT_EQ(Build(song_), TRNMPA_ERROR_INDEX_WRITE);
    EXPECT_TRUE(fs::is_directory(index_));
    EXPECT_EQ(Names().size(), 2u);
}

TEST_F(CIndex, IsThereForTheNextReader) {
    const CReader before = OpenC(song_);
    ASSERT_EQ(Build(song_), TRNMPA_OK);
    const CReader after = OpenC(song_);
    const auto part = [this](std::size_t frame, int skipped) {
        const Pcm whole = DeliveredFrom(stream_, frame, skipped);
        return Pcm(whole.begin() + 2 * 1000, whole.begin() + 2 * 1500);
    };
    EXPECT_EQ(ReadC(*before, 1000, 500).pcm, part(0, kDecoderDelay));
    EXPECT_EQ(ReadC(*after, 1000, 500).pcm, part(1, 0));
}

TEST_F(CIndex, OtherHandlesMayBeUsedMeanwhile) {
    struct State {
        CReader reader;
        std::uint64_t samples = 0;
    } state = {OpenC(song_)};
    const auto read = [](void* user, const trnmpa_index_progress*) -> std::int32_t {
        auto& used = *static_cast<State*>(user);
        used.samples += ReadC(*used.reader, 0, 100).result.samples;
        return 0;
    };
    EXPECT_EQ(trnmpa_index_build_utf8(Utf8Of(song_).c_str(), read, &state, nullptr), TRNMPA_OK);
    EXPECT_EQ(state.samples, 500u);
}

TEST_F(CIndex, RefusesWhatIsNoRequest) {
    EXPECT_EQ(trnmpa_index_build_utf8(nullptr, nullptr, nullptr, nullptr), TRNMPA_ERROR_ARGUMENT);
    EXPECT_EQ(trnmpa_index_build_utf16(nullptr, nullptr, nullptr, nullptr), TRNMPA_ERROR_ARGUMENT);
    for (const std::uint32_t size : {0u, 23u, 4097u}) {
        trnmpa_index_progress result = {};
        result.struct_size = size;
        EXPECT_EQ(trnmpa_index_build_utf8(Utf8Of(song_).c_str(), nullptr, nullptr, &result),
                  TRNMPA_ERROR_ARGUMENT);
    }
    EXPECT_FALSE(fs::exists(index_));
}
