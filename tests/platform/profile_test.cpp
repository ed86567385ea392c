#include "os/profile.h"

#include "platform/path_samples.h"
#include "platform/profile_cases.h"
#include "support/test_files.h"

#include <gtest/gtest.h>
#include <random>

namespace {

using test::Bytes;
using test::ProfileCase;

constexpr int kFallback = test::kProfileFallback;

Bytes ToBytes(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

class Profile : public testing::TestWithParam<ProfileCase> {
protected:
    test::ScratchFolder scratch_;
};

TEST_P(Profile, ReadsTheInteger) {
    const std::wstring path = test::Wide(scratch_.Add("case.ini", ToBytes(GetParam().content)));
    EXPECT_EQ(os::ReadProfileInt(path, L"CODEC", L"Key", kFallback), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Cases, Profile, testing::ValuesIn(test::ProfileCases()),
                         [](const auto& instance) { return instance.param.name; });

class ProfileFile : public testing::Test {
protected:
    int Read(const std::wstring& path) { return os::ReadProfileInt(path, L"CODEC", L"Key", kFallback); }

    test::ScratchFolder scratch_;
};

TEST_F(ProfileFile, MissingFileAndFolderGiveTheFallback) {
    EXPECT_EQ(Read(test::Wide(scratch_.Path() / "missing.ini")), kFallback);
    EXPECT_EQ(Read(test::Wide(scratch_.Path())), kFallback);
}

TEST_F(ProfileFile, NamesAreAskedForInAnyCaseAndWithBlanks) {
    const std::wstring path = test::Wide(scratch_.Add("a.ini", ToBytes("[Codec]\r\nkEy=5\r\n")));
    EXPECT_EQ(os::ReadProfileInt(path, L"cODEC", L"KEY", kFallback), 5);
    EXPECT_EQ(os::ReadProfileInt(path, L" codec\t", L" key ", kFallback), 5);
    EXPECT_EQ(os::ReadProfileInt(path, L"codecs", L"key", kFallback), kFallback);
    EXPECT_EQ(os::ReadProfileInt(path, L"codec", L"ke", kFallback), kFallback);
}

TEST_F(ProfileFile, EveryFallbackComesBack) {
    const std::wstring path = test::Wide(scratch_.Add("a.ini", ToBytes("[CODEC]\r\n")));
    for (const int fallback : {0, -1, 1, 2147483647, -2147483647 - 1})
        EXPECT_EQ(os::ReadProfileInt(path, L"CODEC", L"Key", fallback), fallback);
}

TEST_F(ProfileFile, SeesAChangedFile) {
    const auto path = scratch_.Add("a.ini", ToBytes("[CODEC]\r\nKey=5\r\n"));
    EXPECT_EQ(Read(test::Wide(path)), 5);
    test::WriteFile(path, ToBytes("[CODEC]\r\nKey=66\r\n"));
    EXPECT_EQ(Read(test::Wide(path)), 66);
}

TEST_F(ProfileFile, UnicodeNames) {
    for (const auto& name : test::UnicodeNames())
        EXPECT_EQ(Read(test::Wide(scratch_.Add(name, ToBytes("[CODEC]\r\nKey=5\r\n")))), 5) << name;
}

TEST_F(ProfileFile, PathOfMoreThanFourHundredCharacters) {
    const test::LongPathFile sample(ToBytes("[CODEC]\r\nKey=5\r\n"));
    EXPECT_EQ(Read(sample.Path()), 5);
}

TEST_F(ProfileFile, LongLinesAreSkipped) {
    const std::string filler(100'000, 'x');
    const std::string content = "[CODEC]\r\nOther=" + filler + "\r\n" + filler + "=1\r\nKey=5\r\n";
    EXPECT_EQ(Read(test::Wide(scratch_.Add("a.ini", ToBytes(content)))), 5);
}

TEST_F(ProfileFile, RandomBytesDoNoHarm) {
    const std::string marks = "[]=\r\n\"'x";
    std::mt19937 random(99);
    for (int round = 0; round < 100; ++round) {
        std::string bytes(random() % 2000, '\0');
        for (char& byte : bytes)
            byte = random() % 4 == 0 ? marks[random() % marks.size()] : static_cast<char>(random());
        EXPECT_EQ(Read(test::Wide(scratch_.Add("garbage.ini", ToBytes(bytes)))), kFallback);
        bytes += "\r\n[CODEC]\r\nKey=5\r\n";
        EXPECT_EQ(Read(test::Wide(scratch_.Add("behind.ini", ToBytes(bytes)))), 5);
    }
}

} // namespace
