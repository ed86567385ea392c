/// `mpatool index`: what it builds and what it refuses.

#include "tools/tool_fixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <system_error>

namespace {

namespace fs = std::filesystem;

using test::Bytes;
using test::ProcessResult;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const Bytes kOldIndex = {1, 2, 3};

class IndexTest : public test::ToolTest {
protected:
    /// The run failed for the reason and made no file.
    void ExpectFailure(const ProcessResult& result, int status, const std::string& reason) const {
        EXPECT_EQ(result.exitStatus, status);
        EXPECT_THAT(result.error, HasSubstr(reason));
        EXPECT_THAT(result.output, IsEmpty());
        EXPECT_THAT(NewFiles(), IsEmpty());
    }
};

TEST_F(IndexTest, ListsEveryFrameButTheFirst) {
    Add("a.mp3", test::SilentLayer3(2499));
    const ProcessResult result = Run({"index", "a.mp3"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "a.mp3: 2,498 frames indexed\n");
    EXPECT_THAT(result.error, IsEmpty());
    EXPECT_EQ(Read("a.mp3.idx"), test::IndexOfSilence(2499));
    EXPECT_THAT(NewFiles(), ElementsAre("a.mp3.idx"));
    EXPECT_EQ(Read("a.mp3"), test::SilentLayer3(2499));
}

TEST_F(IndexTest, ExistingIndexStaysAndTheOtherFilesGoOn) {
    Add("a.mp3", test::SilentLayer3(2));
    Add("a.mp3.idx", kOldIndex);
    Add("b.mp3", test::SilentLayer3(3));
    const ProcessResult result = Run({"index", "a.mp3", "b.mp3"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "b.mp3: 2 frames indexed\n");
    EXPECT_EQ(result.error, "mpatool: a.mp3.idx: exists already; use --force to replace it\n");
    EXPECT_EQ(Read("a.mp3.idx"), kOldIndex);
    EXPECT_THAT(NewFiles(), ElementsAre("b.mp3.idx"));
}

TEST_F(IndexTest, ForceReplaces) {
    Add("a.mp3", test::SilentLayer3(2));
    Add("a.mp3.idx", kOldIndex);
    const ProcessResult result = Run({"index", "--force", "a.mp3"});
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_EQ(result.output, "a.mp3: 1 frame indexed\n");
    EXPECT_EQ(Read("a.mp3.idx"), test::IndexOfSilence(2));
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(IndexTest, FilesThatCannotBeIndexed) {
    Add("noise.mp3", Bytes(9000, 0x55));
    Add("empty.mp3", {});
    const std::string noFrames = ": no MPEG audio frames found where an index starts";
    ExpectFailure(Run({"index", "none.mp3"}), 1, "mpatool: none.mp3: ");
    ExpectFailure(Run({"index", "noise.mp3"}), 1, "mpatool: noise.mp3" + noFrames);
    ExpectFailure(Run({"index", "empty.mp3"}), 1, "mpatool: empty.mp3" + noFrames);
    ExpectFailure(Run({"index", "."}), 1, "mpatool: .: Is a directory; -r takes the files in it");
}

TEST_F(IndexTest, UnusableFileKeepsItsIndexInSpiteOfForce) {
    Add("noise.mp3", Bytes(9000, 0x55));
    Add("noise.mp3.idx", kOldIndex);
    ExpectFailure(Run({"index", "--force", "noise.mp3"}), 1, "no MPEG audio frames found");
    EXPECT_EQ(Read("noise.mp3.idx"), kOldIndex);
}

TEST_F(IndexTest, FolderWithTheNameOfTheIndex) {
    Add("a.mp3", test::SilentLayer3(2));
    AddFolder("a.mp3.idx");
    ExpectFailure(Run({"index", "--force", "a.mp3"}), 1, "mpatool: a.mp3.idx: Is a directory");
}

TEST_F(IndexTest, FileOf4GiB) {
    constexpr std::uintmax_t kBytes = std::uintmax_t{1} << 32;
    Add("huge.mp3", test::SilentLayer3(2));
    std::error_code error;
    fs::resize_file(InFolder("huge.mp3"), kBytes, error);
    if (error)
        GTEST_SKIP() << "no sparse file of 4 GiB: " << error.message();
    ExpectFailure(Run({"index", "huge.mp3"}), 1,
                  "mpatool: huge.mp3: has 4 GiB or more; an index cannot describe it");
}

TEST_F(IndexTest, FolderThatCannotBeWritten) {
    Add("a.mp3", test::SilentLayer3(2));
    const fs::perms before = fs::status(Folder()).permissions();
    fs::permissions(Folder(), fs::perms::owner_read | fs::perms::owner_exec);
    std::ofstream probe(InFolder("probe"));
    const bool isWritable = probe.is_open();
    probe.close();
    const ProcessResult result = Run({"index", "a.mp3"});
    fs::permissions(Folder(), before);
    fs::remove(InFolder("probe"));
    if (isWritable)
        GTEST_SKIP() << "this user can write to every folder";
    ExpectFailure(result, 1, "mpatool: a.mp3: no index can be written beside it: ");
}

TEST_F(IndexTest, NameTooLongForAnIndex) {
    constexpr std::size_t kLongestName = 255;
    const std::string name = std::string(kLongestName - 5, 'n') + ".mp3";
    Add(name, test::SilentLayer3(2));
    const ProcessResult result = Run({"index", name});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.error, AllOf(HasSubstr(name + ".idx: "), HasSubstr("; no index was left\n")));
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(IndexTest, ManyFilesSideBySide) {
    std::vector<std::string> arguments = {"index", "--jobs", "3"};
    std::string expected;
    for (int i = 0; i < 9; ++i) {
        const std::string name = std::to_string(i) + ".mp3";
        Add(name, test::SilentLayer3(static_cast<std::size_t>(10 + i)));
        arguments.push_back(name);
    }
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_EQ(NewFiles().size(), 9u);
    for (int i = 0; i < 9; ++i) {
        EXPECT_THAT(result.output,
                    HasSubstr(std::to_string(i) + ".mp3: " + std::to_string(9 + i) + " frames indexed\n"));
        EXPECT_EQ(Read(std::to_string(i) + ".mp3.idx"),
                  test::IndexOfSilence(static_cast<std::size_t>(10 + i)));
    }
}

TEST_F(IndexTest, FoldersInDepthAndInOrder) {
    for (const char* folder : {"b", "b/d", "c", "empty"})
        fs::create_directory(InFolder(folder));
    for (const char* file : {"b/2.mp3", "b/1.MP2", "b/d/3.m2a", "c/4.mp3", "0.mp3"})
        test::WriteFile(InFolder(file), test::SilentLayer3(2));
    test::WriteFile(InFolder("b/notes.txt"), test::SilentLayer3(2));
    std::error_code noLinks;
    fs::create_directory_symlink("..", InFolder("b/up"), noLinks);

    const ProcessResult result = Run({"index", "-r", "b", "0.mp3", "c"});
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    std::string output = result.output;
    std::ranges::replace(output, '\\', '/');
    EXPECT_EQ(output, "b/1.MP2: 1 frame indexed\nb/2.mp3: 1 frame indexed\nb/d/3.m2a: 1 frame indexed\n"
                      "0.mp3: 1 frame indexed\nc/4.mp3: 1 frame indexed\n");
    EXPECT_FALSE(Exists("b/notes.txt.idx"));
    EXPECT_TRUE(Exists("b/d/3.m2a.idx"));

    const ProcessResult none = Run({"index", "-r", "empty", "b/d", "--force"});
    EXPECT_EQ(none.exitStatus, 1);
    EXPECT_EQ(none.error, "mpatool: empty: no files in it whose names the module handles\n");
    EXPECT_THAT(none.output, HasSubstr("3.m2a: 1 frame indexed\n"));
}

TEST_F(IndexTest, NamesInAnyScript) {
    const std::string name = "пісня 音楽 \u00fc.mp3";
    AddFolder("ö");
    test::WriteFile(InFolder("ö/" + name), test::SilentLayer3(3));
    const ProcessResult result = Run({"index", "-r", "ö"});
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_THAT(result.output, HasSubstr(name + ": 2 frames indexed\n"));
    EXPECT_EQ(Read("ö/" + name + ".idx"), test::IndexOfSilence(3));
    EXPECT_THAT(Run({"index", "ö/" + name}).error, HasSubstr(name + ".idx: exists already"));
    EXPECT_THAT(Run({"index", "--verify", "ö/" + name}).output, HasSubstr(name + ": good (2 frames)\n"));
}

TEST_F(IndexTest, UnusableArguments) {
    Add("a.mp3", test::SilentLayer3(2));
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"--jobs", "0"}, "--jobs"},
        {{"--jobs", "65"}, "--jobs"},
        {{"--jobs", "-1"}, "--jobs"},
        {{"--jobs", "many"}, "--jobs"},
        {{"--jobs", "1.5"}, "--jobs"},
        {{"--jobs"}, "--jobs"},
        {{"--verify", "--force"}, "--ver"},
        {{"--verify", "--jobs", "2"}, "--ver"},
        {{"--loud"}, "--loud"},
    };
    for (const auto& [further, reason] : cases) {
        std::vector<std::string> arguments = {"index", "a.mp3"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        ExpectFailure(Run(arguments), 2, reason);
    }
    ExpectFailure(Run({"index"}), 2, "FILE");
}

TEST_F(IndexTest, HelpTellsTheExitStatuses) {
    const ProcessResult help = Run({"index", "--help"});
    EXPECT_EQ(help.exitStatus, 0);
    EXPECT_THAT(help.output, AllOf(HasSubstr("--verify"), HasSubstr("  130  ended by Ctrl-C")));
    EXPECT_THAT(Run({"--help"}).output, AllOf(HasSubstr("index"), HasSubstr("frames"), HasSubstr("  130 ")));
}

TEST_F(IndexTest, ModuleThatIsNone) {
    Add("a.mp3", test::SilentLayer3(2));
    ExpectFailure(Run({"index", "a.mp3", "--module", "none.so"}), 1, "none.so: the module cannot be loaded");
}

TEST_F(IndexTest, ReportNobodyReadsEndsQuietly) {
    AddPlanned("a.mp3", test::SilentLayer3(20), {{"indexEntries", 400}, {"indexDelay", 2}});
    test::RunningProcess process = StartCounting({"index", "a.mp3"});
    process.CloseOutput();
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.error, Not(HasSubstr("a.mp3")));
}

} // namespace
