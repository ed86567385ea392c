/// The settings file beside the module: a copy of the module in a folder of its own, loaded from there.
#include "reader/reader_streams.h"
#include "support/loaded_module.h"

#include "os/paths.h"
#include "trnmediadet/media_info.h"
#include "trnmpafileread/c_api.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;

/// What OpenFile gives with the external decoder selected.
constexpr std::int32_t kSelected = TRN_HAS_EXTERNAL_DECODER ? 1 : 0;

using Reader = std::unique_ptr<PLUGIN_FILE_READER_CLASS>;

class SettingsBesideTheModule : public testing::Test {
protected:
    void SetUp() override {
        const char* built = std::getenv("TRN_MODULE");
        ASSERT_NE(built, nullptr) << "run the tests through ctest";
        const fs::path copy = fs::absolute(folder_.Path() / fs::path(built).filename());
        fs::copy_file(built, copy);
        // On Windows the external decoder's library stands there too.
        for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(built).parent_path())) {
            if (entry.path().filename().string().find("mpg123") != std::string::npos)
                fs::copy_file(entry.path(), folder_.Path() / entry.path().filename());
        }
        ASSERT_TRUE(library_.Load(test::Wide(copy))) << os::NarrowToUtf8(library_.ErrorText());
        const auto entry = library_.FunctionNamed<GetPluginReadModuleFunction>("GetPluginReadModule");
        ASSERT_NE(entry, nullptr);
        module_.reset(entry());
        ASSERT_NE(module_, nullptr);
    }

    void TearDown() override {
        module_.reset();
        library_.Unload();
    }

    void Write(const std::string& settings) {
        folder_.Add("trnfsdk.ini", test::Bytes(settings.begin(), settings.end()));
    }

    Reader NewReader() {
        PLUGIN_FILE_READER_CLASS* reader = nullptr;
        EXPECT_EQ(module_->CreateReaderClass(2323, &reader), 1);
        return Reader(reader);
    }

    std::int32_t OpenWith(const std::string& settings, std::uint32_t flags) {
        Write(settings);
        return NewReader()->OpenFile(path_, flags);
    }

    test::ScratchFolder folder_;
    os::SharedLibrary library_;
    std::unique_ptr<PLUGIN_FILE_READER_MODULE> module_;
    const test::bitstream::Stream stream_ = test::SteadyStream();
    const std::wstring path_ = test::Wide(folder_.Add("song.mp3", stream_.bytes));
    const test::Pcm whole_ = test::DeliveredFrom(stream_, 0, test::kDecoderDelay);
};

} // namespace

TEST_F(SettingsBesideTheModule, TheDecoderSelectorDecidesAboutTheSampleReader) {
    EXPECT_EQ(NewReader()->OpenFile(path_, 4), 1) << "no file";
    EXPECT_EQ(OpenWith("[CODEC]\r\nMP3DecoderUse=1\r\n", 4), kSelected);
    EXPECT_EQ(OpenWith("[CODEC]\r\nMP3DecoderUse=1\r\n", 8), kSelected);
    EXPECT_EQ(OpenWith("[CODEC]\r\nMP3DecoderUse=1\r\n", 2 | 4), kSelected);
    EXPECT_EQ(OpenWith("[CODEC]\r\nMP3DecoderUse=1\r\n", 2), 1) << "the probe decodes nothing";
    EXPECT_EQ(OpenWith("[CODEC]\r\nMP3DecoderUse=2\r\n", 4), 0);
    EXPECT_EQ(OpenWith("[CODEC]\r\nMP3DecoderUse=-1\r\n", 4), 0);
    EXPECT_EQ(OpenWith("[CODEC]\r\nMP3DecoderUse=0\r\n", 4), 1);
    EXPECT_EQ(OpenWith("[codec]\r\nmp3decoderuse=1\r\n", 4), kSelected);
    EXPECT_EQ(OpenWith("[READSIZE]\r\nMP3DecoderUse=1\r\n", 4), 1);
    EXPECT_EQ(OpenWith("", 4), 1);
}

TEST_F(SettingsBesideTheModule, TheCInterfaceTellsOfTheDecoder) {
    const auto open = library_.FunctionNamed<decltype(&trnmpa_reader_open_utf8)>("trnmpa_reader_open_utf8");
    const auto describe = library_.FunctionNamed<decltype(&trnmpa_reader_info)>("trnmpa_reader_info");
    const auto close = library_.FunctionNamed<decltype(&trnmpa_reader_close)>("trnmpa_reader_close");
    ASSERT_TRUE(open != nullptr && describe != nullptr && close != nullptr);
    const std::string path = os::NarrowToUtf8(path_);
    trnmpa_reader* reader = nullptr;
    for (const char* selector : {"2", "-1"}) {
        Write("[CODEC]\nMP3DecoderUse=" + std::string(selector) + "\n");
        EXPECT_EQ(open(path.c_str(), &reader), TRNMPA_ERROR_DECODER);
        EXPECT_EQ(reader, nullptr);
    }
    Write("[CODEC]\nMP3DecoderUse=1\n");
    EXPECT_EQ(open(path.c_str(), &reader), kSelected == 1 ? TRNMPA_OK : TRNMPA_ERROR_DECODER);
    trnmpa_info info = {};
    info.struct_size = sizeof info;
    EXPECT_EQ(describe(reader, &info), kSelected == 1 ? TRNMPA_OK : TRNMPA_ERROR_ARGUMENT);
    EXPECT_EQ(info.delay, kSelected == 1 ? 529u : 0u);
    close(reader);
}

TEST_F(SettingsBesideTheModule, AnOpenReaderKeepsItsDecoder) {
    Write("[CODEC]\nMP3DecoderUse=0\n");
    const Reader reader = NewReader();
    ASSERT_EQ(reader->OpenFile(path_, 4), 1);
    EXPECT_EQ(OpenWith("[CODEC]\nMP3DecoderUse=2\n", 4), 0);
    EXPECT_EQ(test::ReadPcm(*reader, 9000, 500), test::Pcm(whole_.begin() + 18000, whole_.begin() + 19000));
    KW_MEDIA_BASE_INFO_ST info;
    EXPECT_EQ(reader->GetFileInfo(4, &info), 1);
    EXPECT_EQ(reader->OpenFile(path_, 4), 0) << "a new engine sees the new setting";
    EXPECT_FALSE(test::ReadPcm(*reader, 0, 10).has_value());
    EXPECT_LT(reader->GetFileInfo(4, &info), 1);
}

TEST_F(SettingsBesideTheModule, AnyBlockSizeReadsTheSame) {
    for (const char* value :
         {"64", "1", "0", "-1", "4194303", "4194304", "99999999999", "-2147483648", "x"}) {
        Write("[READSIZE]\r\nReadMp3BufSize=" + std::string(value) + "\r\n");
        const Reader reader = NewReader();
        ASSERT_EQ(reader->OpenFile(path_, 2 | 4), 1) << value;
        EXPECT_EQ(test::ReadPcm(*reader, 0, static_cast<std::uint32_t>(whole_.size() / 2)), whole_) << value;
        EXPECT_EQ(test::ReadPcm(*reader, 9000, 10), test::Pcm(whole_.begin() + 18000, whole_.begin() + 18020))
            << value;
    }
}
