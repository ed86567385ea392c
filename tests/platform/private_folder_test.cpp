#include "os/private_folder.h"

#include "os/paths.h"
#include "os/shared_library.h"
#include "platform/path_samples.h"
#include "support/test_files.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

using test::Bytes;

fs::path PathOf(const os::PrivateFolder& folder) {
    return test::Plain(folder.Path());
}

TEST(PrivateFolder, GoesWithAllThatWasPutThere) {
    fs::path place;
    {
        os::PrivateFolder folder;
        ASSERT_TRUE(folder.Create(L"test-"));
        place = PathOf(folder);
        EXPECT_TRUE(fs::is_directory(place) && place.is_absolute());
        EXPECT_TRUE(place.filename().string().starts_with("test-"));
        ASSERT_TRUE(folder.AddFile(L"text", "ab"));
        EXPECT_EQ(test::ReadFile(test::Plain(folder.PathOf(L"text"))), (Bytes{'a', 'b'}));
    }
    EXPECT_FALSE(fs::exists(place));
}

TEST(PrivateFolder, EachIsAnother) {
    os::PrivateFolder one;
    os::PrivateFolder two;
    ASSERT_TRUE(one.Create(L"test-") && two.Create(L"test-"));
    EXPECT_NE(one.Path(), two.Path());
}

TEST(PrivateFolder, TakesNoNameTwice) {
    os::PrivateFolder folder;
    ASSERT_TRUE(folder.Create(L"test-") && folder.AddFile(L"text", "ab"));
    EXPECT_FALSE(folder.AddFile(L"text", "cd"));
    EXPECT_FALSE(folder.ErrorText().empty());
}

TEST(PrivateFolder, LibraryKnowsItselfThere) {
    const fs::path library =
        test::BinaryFolder() / "bin" / test::Plain(os::SharedLibraryFileName(L"module_path_library"));
    os::PrivateFolder folder;
    ASSERT_TRUE(folder.Create(L"test-"));
    ASSERT_TRUE(folder.AddLibrary(test::Wide(library))) << os::NarrowToUtf8(folder.ErrorText());
    const std::wstring place = folder.PathOf(test::Wide(library.filename()));
    {
        os::SharedLibrary loaded;
        ASSERT_TRUE(loaded.Load(place)) << os::NarrowToUtf8(loaded.ErrorText());
        const auto path = loaded.FunctionNamed<const wchar_t* (*)()>("TestModulePath");
        ASSERT_NE(path, nullptr);
        EXPECT_EQ(std::wstring(path()), place);
    }
    EXPECT_TRUE(fs::exists(library));
}

TEST(PrivateFolder, NothingIsAddedBeforeItIsMade) {
    os::PrivateFolder folder;
    EXPECT_TRUE(folder.Path().empty());
    EXPECT_FALSE(folder.AddFile(L"text", "ab"));
    EXPECT_FALSE(folder.AddLibrary(os::ExecutablePath()));
}

} // namespace
