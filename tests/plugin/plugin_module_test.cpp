/// The module object, through the loaded module.
#include "support/loaded_module.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

namespace {

using Reader = std::unique_ptr<PLUGIN_FILE_READER_CLASS>;

template <std::size_t Size>
struct Record {
    std::array<unsigned char, Size> bytes;
    std::array<unsigned char, 32> guard;

    Record() {
        bytes.fill(0xCC);
        guard.fill(0xCC);
    }
    bool IsWithinBounds() const {
        return std::ranges::all_of(guard, [](unsigned char byte) { return byte == 0xCC; });
    }
};

template <std::size_t Size>
void PutText(std::array<unsigned char, Size>& bytes, std::size_t offset, std::string_view text) {
    std::ranges::copy(text, bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

template <std::size_t Size>
void PutNumber(std::array<unsigned char, Size>& bytes, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes[offset + i] = static_cast<unsigned char>(value >> 8 * i);
}

class PluginModule : public testing::Test {
protected:
    /// The identifier stored for a path; the result must tell the same.
    std::int32_t IdentifierFor(const std::wstring& path) {
        std::int32_t identifier = -1;
        const std::int32_t result = module_.Module().GetClassIdForFile(path, &identifier);
        EXPECT_EQ(result, identifier != 0 ? 1 : 0);
        return identifier;
    }

    test::LoadedModule module_;
};

} // namespace

TEST_F(PluginModule, IdentityRecordByteForByte) {
    std::array<unsigned char, 132> expected = {};
    PutText(expected, 0, "1000");
    PutText(expected, 4, "MPA Plugin Reader Module");
    PutNumber(expected, 36, 3);
    PutNumber(expected, 40, 2321);
    PutNumber(expected, 44, 2322);
    PutNumber(expected, 48, 2323);
    PutNumber(expected, 104, 1);
    Record<132> record;
    EXPECT_EQ(
        module_.Module().GetModuleInfo(reinterpret_cast<PLUGIN_READER_MODULE_INFO*>(record.bytes.data())), 1);
    EXPECT_EQ(record.bytes, expected);
    EXPECT_TRUE(record.IsWithinBounds());
    EXPECT_EQ(module_.Module().GetModuleInfo(nullptr), 0);
}

TEST_F(PluginModule, ReaderIdentityRecordByteForByte) {
    std::array<unsigned char, 64> expected = {};
    PutText(expected, 0, "MPA  Plugin File Reader");
    PutNumber(expected, 32, 2322);
    PutNumber(expected, 36, 6);
    for (const std::int32_t identifier : {2321, 2322, 2323}) {
        const Reader reader = module_.CreateReader(identifier);
        Record<64> record;
        EXPECT_EQ(reader->GetClassInfo(reinterpret_cast<PLUGIN_READER_CLASS_INFO*>(record.bytes.data())), 1);
        EXPECT_EQ(record.bytes, expected) << identifier;
        EXPECT_TRUE(record.IsWithinBounds());
        EXPECT_EQ(reader->GetClassInfo(nullptr), 0);
    }
}

TEST_F(PluginModule, ClassesByExtension) {
    for (const wchar_t* path : {L"song.mp3", L"SONG.Mp3", L"a.b.mp3", L"x.MP3", L"x.mP3", L".mp3", L"mp3",
                                L"MP3", L"C:\\Musik.wav\\song.mp3", L"/music.wav/song.mp3", L"x..mp3"})
        EXPECT_EQ(IdentifierFor(path), 2323) << path;
    for (const wchar_t* path : {L"track.m2a", L"x.s48", L"x.S48", L"x.mp2", L"x.Mp2", L"x.M2a"})
        EXPECT_EQ(IdentifierFor(path), 2322) << path;
    EXPECT_EQ(IdentifierFor(L"x.mp1"), 2321);
    EXPECT_EQ(IdentifierFor(L"x.MP1"), 2321);
}

TEST_F(PluginModule, OtherNamesHaveNoClass) {
    for (const wchar_t* path : {L"",
                                L".",
                                L"..",
                                L"song",
                                L"x.wav",
                                L"x.mp3.",
                                L"x.mp3 ",
                                L"x. mp3",
                                L"x.mp33",
                                L"x.mp",
                                L"x.mp3.idx",
                                L"mp3.x",
                                L"folder.mp3/song",
                                L"C:\\folder.mp3\\song",
                                L"x.mp\x0663",
                                L"x.\xFF4D\xFF50\xFF13",
                                L"x.mp4",
                                L"x.mpa",
                                L"song mp3",
                                L"\\\\server\\share.mp3\\"})
        EXPECT_EQ(IdentifierFor(path), 0) << path;
    EXPECT_EQ(IdentifierFor(std::wstring(L"x.mp3\0", 6)), 0);
    EXPECT_EQ(IdentifierFor(std::wstring(1 << 20, L'.')), 0);
    EXPECT_EQ(IdentifierFor(std::wstring(1 << 20, L'x') + L".mp3"), 2323);
}

TEST_F(PluginModule, NamesFromEveryScript) {
    EXPECT_EQ(IdentifierFor(L"\x00DCn\x00EF \x65E5\x672C.mp3"), 2323);
    EXPECT_EQ(IdentifierFor(L"\x00DCn\x00EF.\x65E5\x672C"), 0);
    EXPECT_EQ(IdentifierFor(L"x.\x00DCmp3"), 0);
}

TEST_F(PluginModule, WithoutAPlaceForTheIdentifierGivesZero) {
    EXPECT_EQ(module_.Module().GetClassIdForFile(L"song.mp3", nullptr), 0);
}

TEST_F(PluginModule, CreatesReadersForItsThreeClassesOnly) {
    for (const std::int32_t identifier : {2321, 2322, 2323}) {
        PLUGIN_FILE_READER_CLASS* reader = nullptr;
        EXPECT_EQ(module_.Module().CreateReaderClass(identifier, &reader), 1);
        EXPECT_NE(reader, nullptr);
        delete reader;
        EXPECT_EQ(module_.Module().CreateReaderClass(identifier, nullptr), 0);
    }
    for (const std::int32_t identifier :
         {0, 1, 3, 2320, 2324, -2323, std::numeric_limits<std::int32_t>::max(),
          std::numeric_limits<std::int32_t>::min()}) {
        PLUGIN_FILE_READER_CLASS* reader = nullptr;
        EXPECT_EQ(module_.Module().CreateReaderClass(identifier, &reader), 0) << identifier;
        EXPECT_EQ(reader, nullptr);
    }
}

TEST_F(PluginModule, ReservedOperations) {
    EXPECT_EQ(module_.Module().ModuleReserved1(), 0);
    EXPECT_EQ(module_.Module().ModuleReserved2(), 1);
}

TEST_F(PluginModule, EachCallOfTheEntryGivesAnObjectOfItsOwn) {
    const auto entry = module_.Library().FunctionNamed<GetPluginReadModuleFunction>("GetPluginReadModule");
    ASSERT_NE(entry, nullptr);
    const std::unique_ptr<PLUGIN_FILE_READER_MODULE> first(entry());
    const std::unique_ptr<PLUGIN_FILE_READER_MODULE> second(entry());
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
}
