/// The engine under settings from a file. This program is alone in its folder and writes the file beside
/// itself.
#include "reader/engine.h"
#include "reader/reader_streams.h"
#include "reader/settings_file.h"

#include "plugin/module_settings.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using namespace trnmpa;
using test::Engine;

namespace {

constexpr bool kHasExternalDecoder = TRN_HAS_EXTERNAL_DECODER;
/// What an engine with the external decoder selected gives.
constexpr std::int32_t kSelected = kHasExternalDecoder ? kSuccess : kNoDecoder;

class DecoderSelection : public testing::Test {
protected:
    void Write(const std::string& text) { settings_.Write(text); }
    void Select(const std::string& value) { settings_.SelectDecoder(value); }

    const test::SettingsFile settings_;
    test::ScratchFolder folder_;
    const test::bitstream::Stream stream_ = test::SteadyStream();
    const std::filesystem::path path_ = folder_.Add("stream.mp3", stream_.bytes);
    const test::Pcm whole_ = test::DeliveredFrom(stream_, 0, test::kDecoderDelay);
    KW_MEDIA_BASE_INFO_ST info_;
};

} // namespace

TEST_F(DecoderSelection, OneIsTheExternalDecoderWhereItWasBuilt) {
    Select("1");
    Engine engine;
    EXPECT_EQ(engine->Initialize(), kSelected);
    EXPECT_EQ(engine->SetInputFile(test::Wide(path_)), kSelected);
    EXPECT_EQ(engine->GetStreamInfo(&info_), kSelected);
    EXPECT_EQ(engine.Ask(0, 10).result, kHasExternalDecoder ? kSuccess : kNotOpen);
    EXPECT_EQ(engine->Close(), kSuccess);
}

TEST_F(DecoderSelection, OtherValuesFailWhenTheFileIsOpened) {
    for (const char* value : {"2", "-1", "2147483647", "100"}) {
        Select(value);
        Engine engine;
        EXPECT_EQ(engine->Initialize(), kSuccess) << value;
        EXPECT_EQ(engine->SetInputFile(test::Wide(path_)), kSuccess) << value;
        EXPECT_EQ(engine->GetStreamInfo(&info_), kMediaNotOpened) << value;
        EXPECT_EQ(engine->GetStreamInfo(nullptr), kMediaNotOpened) << value;
        EXPECT_EQ(engine.Ask(0, 10).result, kNotOpen) << value;
    }
}

TEST_F(DecoderSelection, OtherValuesFailWithAnIndexToo) {
    folder_.Add("stream.mp3.idx", test::IndexOf(stream_).ToBytes());
    Select("2");
    Engine engine;
    EXPECT_EQ(engine.Open(path_), kMediaNotOpened);
}

TEST_F(DecoderSelection, ZeroAndNoNumberAreTheBuiltInDecoder) {
    for (const char* value : {"0", "", "x", "-0"}) {
        Select(value);
        Engine engine(path_);
        EXPECT_EQ(engine.Opened(), kSuccess) << value;
        EXPECT_EQ(engine.Read(0, static_cast<std::uint32_t>(whole_.size() / 2)), whole_) << value;
    }
}

TEST_F(DecoderSelection, AnEngineKeepsWhatItSaw) {
    Engine early;
    Select("1");
    Engine late;
    ASSERT_EQ(Mp3DecoderUse(), 1);
    EXPECT_EQ(early.Open(path_), kSuccess);
    EXPECT_EQ(early.Read(0, 10), test::Pcm(whole_.begin(), whole_.begin() + 20));
    EXPECT_EQ(late.Open(path_), kSelected);
    Select("0");
    EXPECT_EQ(late.Open(path_), kSelected);
    Engine later;
    EXPECT_EQ(later.Open(path_), kSuccess);
    Select("2");
    Engine last;
    EXPECT_EQ(later.Read(5000, 10), test::Pcm(whole_.begin() + 10000, whole_.begin() + 10020));
    EXPECT_EQ(last.Open(path_), kMediaNotOpened);
}

TEST_F(DecoderSelection, AnyBlockSizeReadsTheSame) {
    for (const char* value : {"64", "1", "0", "-1", "4194303", "4194304", "99999999999", "-2147483648"}) {
        Write("[READSIZE]\nReadMp3BufSize=" + std::string(value) + "\n");
        Engine engine(path_);
        ASSERT_EQ(engine.Opened(), kSuccess) << value;
        EXPECT_EQ(engine.Read(0, static_cast<std::uint32_t>(whole_.size() / 2)), whole_) << value;
        EXPECT_EQ(engine.Read(9000, 10), test::Pcm(whole_.begin() + 18000, whole_.begin() + 18020)) << value;
    }
}
