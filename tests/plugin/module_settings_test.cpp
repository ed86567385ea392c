#include "plugin/module_settings.h"

#include "os/paths.h"
#include "platform/path_samples.h"
#include "support/subprocess.h"
#include "support/test_files.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <string>

namespace {

namespace fs = std::filesystem;

constexpr int kLargest = std::numeric_limits<std::int32_t>::max();
constexpr int kLeast = std::numeric_limits<std::int32_t>::min();
constexpr int kDefaultBytes = 524288;

test::Bytes ToBytes(const std::string& text) {
    return test::Bytes(text.begin(), text.end());
}

/// A source of settings with the given read buffer size.
trnmpa::SettingReader WithReadBufSize(std::int32_t kiB) {
    return [kiB](const std::wstring&, const std::wstring& key, std::int32_t fallback) {
        return key == L"ReadBufSize" ? kiB : fallback;
    };
}

TEST(ModuleSettings, ReadBufferSizeInBytes) {
    EXPECT_EQ(trnmpa::ReadModuleSettings(WithReadBufSize(64)), 65536);
    EXPECT_EQ(trnmpa::ReadModuleSettings(WithReadBufSize(1)), 1024);
    for (const int kiB : {0, -1, -5, kLeast})
        EXPECT_EQ(trnmpa::ReadModuleSettings(WithReadBufSize(kiB)), kDefaultBytes) << kiB;
}

TEST(ModuleSettings, ReadBufferSizeSaturates) {
    EXPECT_EQ(trnmpa::ReadModuleSettings(WithReadBufSize(2097151)), 2097151 * 1024);
    EXPECT_EQ(trnmpa::ReadModuleSettings(WithReadBufSize(2097152)), kLargest);
    EXPECT_EQ(trnmpa::ReadModuleSettings(WithReadBufSize(kLargest)), kLargest);
}

TEST(ModuleSettings, AsksForThreeKeysWithTheirDefaults) {
    std::wstring asked;
    trnmpa::ReadModuleSettings(
        [&asked](const std::wstring& section, const std::wstring& key, std::int32_t fallback) {
            asked += section + L"/" + key + L"=" + std::to_wstring(fallback) + L" ";
            return fallback;
        });
    EXPECT_EQ(asked, L"FILERW/ReadBufSize=-1 CODEC/MP3DecoderUse=0 READSIZE/ReadMp3BufSize=0 ");
}

TEST(ModuleSettings, IntegersAreKeptAsTheyStand) {
    for (const int value : {1, 2, -1, kLargest, kLeast, 0}) {
        trnmpa::ReadModuleSettings(
            [value](const std::wstring&, const std::wstring&, std::int32_t) { return value; });
        EXPECT_EQ(trnmpa::Mp3DecoderUse(), value);
        EXPECT_EQ(trnmpa::ReadMp3BufSize(), value);
    }
}

TEST(ModuleSettings, AnExceptionGivesOneAndLeavesTheRest) {
    trnmpa::ReadModuleSettings([](const std::wstring&, const std::wstring&, std::int32_t) { return 7; });
    const auto failing = [](const std::wstring&, const std::wstring& key, std::int32_t) -> std::int32_t {
        if (key == L"ReadMp3BufSize")
            throw std::bad_alloc();
        return 8;
    };
    EXPECT_EQ(trnmpa::ReadModuleSettings(failing), 1);
    EXPECT_EQ(trnmpa::Mp3DecoderUse(), 8);
    EXPECT_EQ(trnmpa::ReadMp3BufSize(), 7);
    const auto failingAtOnce = [](const std::wstring&, const std::wstring&, std::int32_t) -> std::int32_t {
        throw 5;
    };
    EXPECT_EQ(trnmpa::ReadModuleSettings(failingAtOnce), 1);
    EXPECT_EQ(trnmpa::Mp3DecoderUse(), 8);
}

class ConfigFolder : public testing::Test {
protected:
    ConfigFolder() {
        fs::create_directory(program_);
        fs::create_directory(module_);
    }

    std::wstring Choice() const {
        return trnmpa::ChooseConfigFolder(test::Wide(program_ / "host"), test::Wide(module_ / "module"));
    }
    static void AddSettings(const fs::path& folder) { test::WriteFile(folder / "trnfsdk.ini", {}); }

    test::ScratchFolder scratch_;
    const fs::path base_ = fs::absolute(scratch_.Path()).make_preferred();
    const fs::path program_ = base_ / u8"programme Ünï";
    const fs::path module_ = base_ / u8"モジュール";
};

TEST_F(ConfigFolder, WithoutAnyFileTheModulesCounts) {
    EXPECT_EQ(Choice(), test::Wide(module_));
}

TEST_F(ConfigFolder, TheModulesFileCountsWhenTheProgramHasNone) {
    AddSettings(module_);
    EXPECT_EQ(Choice(), test::Wide(module_));
}

TEST_F(ConfigFolder, TheProgramsFileCountsFirst) {
    AddSettings(program_);
    EXPECT_EQ(Choice(), test::Wide(program_));
    AddSettings(module_);
    EXPECT_EQ(Choice(), test::Wide(program_));
}

TEST_F(ConfigFolder, UnknownPlacesGiveNoFolder) {
    EXPECT_EQ(trnmpa::ChooseConfigFolder(L"", L""), L"");
    EXPECT_EQ(trnmpa::ChooseConfigFolder(L"host", L"module"), L"");
}

TEST_F(ConfigFolder, OfThisProgram) {
    const fs::path folder = test::Plain(trnmpa::GetConfigFolder());
    EXPECT_TRUE(fs::equivalent(folder, test::Plain(os::ExecutablePath()).parent_path()));
    EXPECT_FALSE(trnmpa::GetConfigFolder().ends_with(os::kPathSeparator));
}

/// A program in a folder of its own, so that no other test sees the settings file.
class SettingsOfAProgram : public testing::Test {
protected:
    SettingsOfAProgram() {
        const fs::path program = test::Plain(os::ExecutablePath());
        const fs::path name = fs::path("settings_probe").replace_extension(program.extension());
        program_ = fs::absolute(scratch_.Path() / name);
        fs::copy_file(program.parent_path() / name, program_);
    }

    std::string OutputWith(const std::string& settings) {
        scratch_.Add("trnfsdk.ini", ToBytes(settings));
        return Output();
    }
    std::string Output() {
        const test::ProcessResult result = test::RunProcess(program_, {}, test::BinaryFolder());
        EXPECT_EQ(result.exitStatus, 0) << result.error;
        std::string output = result.output;
        std::erase(output, '\r');
        const std::size_t firstLine = output.find('\n');
        return firstLine == std::string::npos ? output : output.substr(firstLine + 1);
    }

    test::ScratchFolder scratch_;
    fs::path program_;
};

TEST_F(SettingsOfAProgram, WithoutAFileEverythingIsDefault) {
    EXPECT_EQ(Output(), "buffer 524288\ndecoder 0\nblock 0\n");
}

TEST_F(SettingsOfAProgram, ComeFromTheFileBesideIt) {
    EXPECT_EQ(OutputWith("[FILERW]\r\nReadBufSize=64\r\n[CODEC]\r\nMP3DecoderUse=1\r\n"
                         "[READSIZE]\r\nReadMp3BufSize=256\r\n"),
              "buffer 65536\ndecoder 1\nblock 256\n");
}

TEST_F(SettingsOfAProgram, FollowTheRulesOfTheSystemsReader) {
    EXPECT_EQ(OutputWith("; settings\n[codec]\nmp3decoderuse = -2 x\n[FILERW]\nReadBufSize=-5\n"
                         "[ReadSize]\nREADMP3BUFSIZE=\"0x10\"\n"),
              "buffer 524288\ndecoder -2\nblock 16\n");
}

TEST_F(SettingsOfAProgram, WrongSectionsDoNotCount) {
    EXPECT_EQ(OutputWith("[CODEC]\nReadBufSize=64\nReadMp3BufSize=64\n[FILERW]\nMP3DecoderUse=1\n"),
              "buffer 524288\ndecoder 0\nblock 0\n");
}

} // namespace
