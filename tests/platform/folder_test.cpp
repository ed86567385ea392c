#include "os/folder.h"

#include "os/paths.h"
#include "platform/path_samples.h"
#include "support/test_files.h"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <system_error>

namespace {

namespace fs = std::filesystem;

using test::Bytes;
using test::Wide;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(FolderTest, FilesAndFoldersSorted) {
    const test::ScratchFolder scratch;
    for (const char* name : {"b.mp3", "a.mp3", "c"})
        scratch.Add(name, Bytes{1});
    for (const char* name : {"z", "y"})
        fs::create_directory(scratch.Path() / name);
    scratch.Add(fs::path("z") / "inside", Bytes{1});
    const os::FolderListing listing = os::ListFolder(Wide(scratch.Path()));
    EXPECT_THAT(listing.files, ElementsAre(L"a.mp3", L"b.mp3", L"c"));
    EXPECT_THAT(listing.folders, ElementsAre(L"y", L"z"));
    EXPECT_EQ(listing.failure, L"");
}

TEST(FolderTest, AnyName) {
    const test::ScratchFolder scratch;
    std::vector<std::wstring> expected;
    for (const fs::path& name : test::UnicodeNames()) {
        scratch.Add(name, Bytes{1});
        expected.push_back(Wide(name));
    }
    std::ranges::sort(expected);
    EXPECT_EQ(os::ListFolder(Wide(scratch.Path())).files, expected);
}

TEST(FolderTest, EmptyFolder) {
    const test::ScratchFolder scratch;
    const os::FolderListing listing = os::ListFolder(Wide(scratch.Path()));
    EXPECT_THAT(listing.files, IsEmpty());
    EXPECT_THAT(listing.folders, IsEmpty());
    EXPECT_EQ(listing.failure, L"");
}

TEST(FolderTest, WhatIsNoFolderHasAReason) {
    const test::ScratchFolder scratch;
    const fs::path file = scratch.Add("file", Bytes{1});
    for (const std::wstring& path : {Wide(file), Wide(scratch.Path() / "missing"), std::wstring(),
                                     Wide(scratch.Path()) + L'\0' + L"x"}) {
        const os::FolderListing listing = os::ListFolder(path);
        EXPECT_NE(listing.failure, L"");
        EXPECT_THAT(listing.files, IsEmpty());
    }
}

TEST(FolderTest, LongPaths) {
    const test::LongPathFile file(Bytes{1});
    EXPECT_THAT(os::ListFolder(file.Folder()).files, ElementsAre(L"file.mp3"));
    EXPECT_THAT(os::ListFolder(file.Folder() + os::kPathSeparator).files, ElementsAre(L"file.mp3"));
}

TEST(FolderTest, LinksToFoldersAreLeftOut) {
    const test::ScratchFolder scratch;
    scratch.Add("file", Bytes{1});
    std::error_code noLinks;
    fs::create_directory_symlink(".", scratch.Path() / "self", noLinks);
    if (noLinks)
        GTEST_SKIP() << "no symbolic links: " << noLinks.message();
    const os::FolderListing listing = os::ListFolder(Wide(scratch.Path()));
    EXPECT_THAT(listing.folders, IsEmpty());
    EXPECT_THAT(listing.files, ElementsAre(L"file"));
}

} // namespace
