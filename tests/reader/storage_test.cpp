/// Files of the family's storage, whose paths hold "dqs:\".
#include "reader/engine.h"
#include "reader/reader_streams.h"

#include "trcommontoolsr/file_access.h"

#include <gtest/gtest.h>

using namespace trnmpa;
using test::Engine;

namespace {

constexpr std::uint32_t kSomeSamples = 5000;

class Storage : public testing::Test {
protected:
    Storage() { TRCT_FileAccess::SetStorageFolder(test::Wide(folder_.Path())); }
    ~Storage() override { TRCT_FileAccess::SetStorageFolder(L""); }

    static test::Pcm First(test::Pcm pcm) {
        pcm.resize(2 * kSomeSamples);
        return pcm;
    }

    test::ScratchFolder folder_;
    const test::bitstream::Stream stream_ = test::SteadyStream();
    const test::Pcm whole_ = test::DeliveredFrom(stream_, 0, test::kDecoderDelay);
};

} // namespace

TEST_F(Storage, WithoutIndex) {
    folder_.Add("song.mp3", stream_.bytes);
    Engine engine;
    ASSERT_EQ(engine.OpenWide(L"dqs:\\song.mp3"), kSuccess);
    EXPECT_EQ(engine.Format().cbSize, 0);
    EXPECT_EQ(engine.Read(0, kSomeSamples), First(whole_));
    EXPECT_EQ(engine.Read(10000, 500), test::Pcm(whole_.begin() + 20000, whole_.begin() + 21000));
    const auto samples = static_cast<std::int64_t>(whole_.size() / 2);
    EXPECT_EQ(engine.Read(samples - 10, 11), test::Pcm(22, 0));
    EXPECT_EQ(engine.Read(samples - 10, 10), test::Pcm(whole_.end() - 20, whole_.end()));
}

TEST_F(Storage, WithIndex) {
    folder_.Add("song.mp3", stream_.bytes);
    folder_.Add("song.mp3.idx", test::IndexOf(stream_).ToBytes());
    const test::Pcm indexed = test::DeliveredFrom(stream_, 1, 0);
    Engine engine;
    ASSERT_EQ(engine.OpenWide(L"server/dqs:\\song.mp3"), kSuccess);
    EXPECT_EQ(engine.Format().cbSize, 18);
    EXPECT_EQ(engine.Read(0, kSomeSamples), First(indexed));
    EXPECT_EQ(engine.Read(10000, 500), test::Pcm(indexed.begin() + 20000, indexed.begin() + 21000));
}

TEST_F(Storage, AnIndexThatCannotBeOpenedIsDropped) {
    folder_.Add("song.mp3", stream_.bytes);
    std::filesystem::create_directory(folder_.Path() / "song.mp3.idx");
    Engine engine;
    ASSERT_EQ(engine.OpenWide(L"dqs:\\song.mp3"), kSuccess);
    EXPECT_EQ(engine.Read(0, kSomeSamples), First(whole_));
}

TEST_F(Storage, ACutIndexReadsAsZeros) {
    folder_.Add("song.mp3", stream_.bytes);
    folder_.Add("song.mp3.idx", test::Bytes(10, 0xFF));
    Engine engine;
    ASSERT_EQ(engine.OpenWide(L"dqs:\\song.mp3"), kSuccess);
    EXPECT_EQ(engine.Format().nSamplesPerSec, 0u);
    EXPECT_EQ(engine.Ask(0, 100).size, 0);
}

TEST_F(Storage, ACutLastFrameIsSilence) {
    folder_.Add("song.mp3", test::Bytes(stream_.bytes.begin(), stream_.bytes.end() - 1));
    const auto samples = static_cast<std::int64_t>(whole_.size() / 2) - 1152;
    Engine engine;
    ASSERT_EQ(engine.OpenWide(L"dqs:\\song.mp3"), kSuccess);
    EXPECT_EQ(engine.Read(samples, 1), test::Pcm(2, 0));
    EXPECT_EQ(engine.Read(samples - 1, 1), test::Pcm(whole_.end() - 2306, whole_.end() - 2304));
}

TEST_F(Storage, WhatIsNotThereDoesNotOpen) {
    Engine engine;
    EXPECT_EQ(engine.OpenWide(L"dqs:\\missing.mp3"), kMediaNotOpened);
    EXPECT_EQ(engine.OpenWide(L"dqs:\\"), kMediaNotOpened);
    folder_.Add("song.mp3.idx", test::IndexOf(stream_).ToBytes());
    EXPECT_EQ(engine.OpenWide(L"dqs:\\song.mp3"), kMediaNotOpened) << "an index alone";
    folder_.Add("song.mp3", stream_.bytes);
    TRCT_FileAccess::SetStorageFolder(L"");
    EXPECT_EQ(engine.OpenWide(L"dqs:\\song.mp3"), kMediaNotOpened) << "no storage";
    EXPECT_EQ(engine.OpenWide(L"DQS:\\song.mp3"), kAnalysisFailed) << "an ordinary path, and no such file";
}
