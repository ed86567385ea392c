#include "os/paths.h"

#include "os/shared_library.h"
#include "platform/path_samples.h"
#include "support/test_files.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

using ModulePathFunction = const wchar_t* (*)();

fs::path TestLibrary() {
    return test::BinaryFolder() / "bin" / test::Plain(os::SharedLibraryFileName(L"module_path_library"));
}

TEST(Paths, ProgramIsKnownByItsFullPath) {
    const fs::path path = test::Plain(os::ExecutablePath());
    EXPECT_TRUE(path.is_absolute());
    EXPECT_TRUE(fs::is_regular_file(path));
    EXPECT_EQ(path.stem(), "platform_test");
    EXPECT_EQ(os::ExecutablePath().find(os::kPathSeparator == L'/' ? L'\\' : L'/'), std::wstring::npos);
}

TEST(Paths, InAProgramTheModuleIsTheProgram) {
    EXPECT_TRUE(fs::equivalent(test::Plain(os::ModulePath()), test::Plain(os::ExecutablePath())));
}

TEST(Paths, ALibraryKnowsItsOwnPath) {
    const test::ScratchFolder scratch;
    const fs::path copy = scratch.Path() / u8"Ünï 日本" / TestLibrary().filename();
    fs::create_directory(copy.parent_path());
    fs::copy_file(TestLibrary(), copy);
    os::SharedLibrary library;
    ASSERT_TRUE(library.Load(test::Wide(copy))) << os::NarrowToUtf8(library.ErrorText());
    const auto modulePath = library.FunctionNamed<ModulePathFunction>("TestModulePath");
    ASSERT_NE(modulePath, nullptr);
    const fs::path seen = test::Plain(modulePath());
    EXPECT_TRUE(seen.is_absolute());
    EXPECT_TRUE(fs::equivalent(seen, copy)) << seen;
    EXPECT_EQ(os::FullPath(test::Wide(copy)), modulePath());
    library.Unload();
}

} // namespace
