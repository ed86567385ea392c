#include "os/shared_library.h"

#include "os/paths.h"
#include "platform/path_samples.h"
#include "support/test_files.h"

#include <gtest/gtest.h>

namespace {

using test::Bytes;

std::wstring TestLibrary() {
    return test::Wide(test::BinaryFolder() / "bin" /
                      test::Plain(os::SharedLibraryFileName(L"module_path_library")));
}

TEST(SharedLibrary, HoldsWhatItLoaded) {
    os::SharedLibrary library;
    EXPECT_FALSE(library.IsLoaded());
    ASSERT_TRUE(library.Load(TestLibrary())) << os::NarrowToUtf8(library.ErrorText());
    EXPECT_TRUE(library.IsLoaded());
    EXPECT_NE(library.Symbol("TestModulePath"), nullptr);
    library.Unload();
    EXPECT_FALSE(library.IsLoaded());
}

TEST(SharedLibrary, MissingSymbol) {
    os::SharedLibrary library;
    ASSERT_TRUE(library.Load(TestLibrary()));
    EXPECT_EQ(library.Symbol("NoSuchFunction"), nullptr);
    EXPECT_FALSE(library.ErrorText().empty());
}

TEST(SharedLibrary, SymbolWithoutALibrary) {
    os::SharedLibrary library;
    EXPECT_EQ(library.Symbol("TestModulePath"), nullptr);
    EXPECT_FALSE(library.ErrorText().empty());
}

TEST(SharedLibrary, WhatIsNoLibraryIsRefused) {
    const test::ScratchFolder scratch;
    os::SharedLibrary library;
    EXPECT_FALSE(library.Load(test::Wide(scratch.Path() / "missing")));
    EXPECT_FALSE(library.ErrorText().empty());
    EXPECT_FALSE(library.Load(test::Wide(scratch.Add("text", Bytes(100, 'a')))));
    EXPECT_FALSE(library.IsLoaded());
}

TEST(SharedLibrary, AFailedLoadDropsTheEarlierLibrary) {
    os::SharedLibrary library;
    ASSERT_TRUE(library.Load(TestLibrary()));
    EXPECT_FALSE(library.Load(L"missing"));
    EXPECT_FALSE(library.IsLoaded());
}

TEST(SharedLibrary, NamesAreNotLookedUpInTheSystem) {
    os::SharedLibrary library;
    EXPECT_FALSE(library.Load(os::kPathSeparator == L'\\' ? L"kernel32.dll" : L"libc.so.6"));
}

TEST(SharedLibrary, MovingTakesTheLibraryAlong) {
    os::SharedLibrary first;
    ASSERT_TRUE(first.Load(TestLibrary()));
    os::SharedLibrary second = std::move(first);
    EXPECT_NE(second.Symbol("TestModulePath"), nullptr);
}

} // namespace
