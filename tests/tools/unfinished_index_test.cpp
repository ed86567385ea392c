#include "mpatool/index/unfinished_index.h"

#include "mpatool/output/tool_error.h"
#include "os/paths.h"
#include "support/test_files.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using mpatool::ToolError;
using mpatool::UnfinishedIndex;
using test::Bytes;
using testing::ElementsAre;
using Links = UnfinishedIndex::Links;

const Bytes kMedia = {1, 2, 3};
const Bytes kOld = {4, 5};
const Bytes kNew = {6, 7, 8};

fs::path PathOf(const std::wstring& wide) {
    const std::string narrow = os::NarrowToUtf8(wide);
    return fs::path(std::u8string(narrow.begin(), narrow.end()));
}

class UnfinishedIndexFolder : public testing::Test {
protected:
    void SetUp() override { scratch_.Add(Name(u8""), kMedia); }

    static fs::path Name(const std::u8string& ending) { return fs::path(u8"ü 音.mp3" + ending); }
    std::wstring Media() const { return test::Wide(scratch_.Path() / Name(u8"")); }
    fs::path Index() const { return scratch_.Path() / Name(u8".idx"); }
    void AddOld() const { scratch_.Add(Name(u8".idx"), kOld); }

    /// Does as the module does, which looks nowhere else.
    static void Build(const UnfinishedIndex& place) {
        EXPECT_EQ(place.Index(), place.Media() + L".idx");
        EXPECT_EQ(test::ReadFile(PathOf(place.Media())), kMedia);
        test::WriteFile(PathOf(place.Index()), kNew);
    }

    std::vector<fs::path> Files() const {
        std::vector<fs::path> names;
        for (const auto& entry : fs::directory_iterator(scratch_.Path()))
            names.push_back(entry.path().filename());
        std::ranges::sort(names);
        return names;
    }

    const test::ScratchFolder scratch_;
};

/// With links as the file system has them, and as on one that has none.
class UnfinishedIndexTest : public UnfinishedIndexFolder, public testing::WithParamInterface<Links> {
protected:
    std::unique_ptr<UnfinishedIndex> Make(bool replace) const {
        return std::make_unique<UnfinishedIndex>(Media(), replace, GetParam());
    }
};

TEST_P(UnfinishedIndexTest, NewIndexGetsItsName) {
    const auto place = Make(false);
    Build(*place);
    place->Commit();
    EXPECT_EQ(test::ReadFile(Index()), kNew);
    EXPECT_EQ(place->Abandon(), "");
    EXPECT_THAT(Files(), ElementsAre(Name(u8""), Name(u8".idx")));
}

TEST_P(UnfinishedIndexTest, NewIndexReplacesTheOldOne) {
    AddOld();
    const auto place = Make(true);
    Build(*place);
    place->Commit();
    EXPECT_EQ(test::ReadFile(Index()), kNew);
    EXPECT_THAT(Files(), ElementsAre(Name(u8""), Name(u8".idx")));
}

TEST_P(UnfinishedIndexTest, AbandonedLeavesTheOldOne) {
    AddOld();
    const auto place = Make(true);
    Build(*place);
    EXPECT_EQ(place->Abandon(), GetParam() == Links::kNone ? "the old index is back in its place"
                                                           : "the old index is untouched");
    EXPECT_EQ(test::ReadFile(Index()), kOld);
    EXPECT_THAT(Files(), ElementsAre(Name(u8""), Name(u8".idx")));
}

TEST_P(UnfinishedIndexTest, AbandonedLeavesNothingWhereNothingWas) {
    const auto place = Make(false);
    Build(*place);
    EXPECT_EQ(place->Abandon(), "no index was left");
    EXPECT_THAT(Files(), ElementsAre(Name(u8"")));
}

TEST_P(UnfinishedIndexTest, EndOfLifeAbandons) {
    AddOld();
    Build(*Make(true));
    EXPECT_EQ(test::ReadFile(Index()), kOld);
    EXPECT_THAT(Files(), ElementsAre(Name(u8""), Name(u8".idx")));
}

TEST_P(UnfinishedIndexTest, NothingBuiltIsNothingLost) {
    AddOld();
    Make(true);
    EXPECT_EQ(test::ReadFile(Index()), kOld);
    fs::remove(Index());
    Make(false);
    EXPECT_THAT(Files(), ElementsAre(Name(u8"")));
}

TEST_P(UnfinishedIndexTest, OldIndexStaysWithoutReplace) {
    AddOld();
    EXPECT_THROW(Make(false), ToolError);
    EXPECT_EQ(test::ReadFile(Index()), kOld);
    EXPECT_THAT(Files(), ElementsAre(Name(u8""), Name(u8".idx")));
}

TEST_P(UnfinishedIndexTest, FolderInItsPlace) {
    fs::create_directory(Index());
    EXPECT_THROW(Make(true), ToolError);
    EXPECT_THAT(Files(), ElementsAre(Name(u8""), Name(u8".idx")));
}

TEST_P(UnfinishedIndexTest, FolderThatIsNotThere) {
    EXPECT_THROW(UnfinishedIndex(test::Wide(scratch_.Path() / "nowhere" / "a.mp3"), true, GetParam()),
                 ToolError);
}

std::string LinksName(const testing::TestParamInfo<Links>& info) {
    return info.param == Links::kNone ? "None" : "WherePossible";
}

INSTANTIATE_TEST_SUITE_P(Links, UnfinishedIndexTest, testing::Values(Links::kWherePossible, Links::kNone),
                         LinksName);

TEST_F(UnfinishedIndexFolder, IndexThatAppearsMeanwhileStays) {
    UnfinishedIndex place(Media(), false);
    if (place.Media() == Media())
        GTEST_SKIP() << "the file system of " << scratch_.Path() << " has no links";
    Build(place);
    AddOld();
    EXPECT_THROW(place.Commit(), ToolError);
    EXPECT_EQ(place.Abandon(), "the old index is untouched");
    EXPECT_EQ(test::ReadFile(Index()), kOld);
    EXPECT_THAT(Files(), ElementsAre(Name(u8""), Name(u8".idx")));
}

TEST_F(UnfinishedIndexFolder, OldIndexStandsWhileTheNewOneGrows) {
    AddOld();
    UnfinishedIndex place(Media(), true);
    if (place.Media() == Media())
        GTEST_SKIP() << "the file system of " << scratch_.Path() << " has no links";
    Build(place);
    EXPECT_EQ(test::ReadFile(Index()), kOld);
}

TEST(UnfinishedIndexWithoutLinksTest, OldIndexStandsAsideWhileTheNewOneGrows) {
    const test::ScratchFolder scratch;
    const fs::path media = scratch.Add("a.mp3", kMedia);
    scratch.Add("a.mp3.idx", kOld);
    const UnfinishedIndex place(test::Wide(media), true, Links::kNone);
    EXPECT_EQ(place.Media(), test::Wide(media));
    std::size_t aside = 0;
    for (const auto& entry : fs::directory_iterator(scratch.Path()))
        aside += entry.path() != media && test::ReadFile(entry.path()) == kOld ? 1 : 0;
    EXPECT_EQ(aside, 1u);
}

} // namespace
