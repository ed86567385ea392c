/// `mpatool decode --decoder`.

#include "os/shared_library.h"
#include "support/loaded_module.h"
#include "tools/tool_fixture.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <gmock/gmock.h>
#include <set>
#include <thread>

namespace {

namespace fs = std::filesystem;

using test::Bytes;
using test::ProcessResult;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr bool kHasExternal = TRN_HAS_EXTERNAL_DECODER != 0;
constexpr std::int64_t kExternalDelay = 529;
constexpr std::size_t kBytesPerSample = 4;
constexpr std::size_t kSampleFrames = 231; // of music.mp3

/// Private folders of the tool among the system's temporary files.
std::set<fs::path> PrivateFolders() {
    std::set<fs::path> folders;
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::temp_directory_path())) {
        if (entry.path().filename().string().starts_with("mpatool-"))
            folders.insert(entry.path());
    }
    return folders;
}

/// Those of other runs, side by side with this one, go by themselves.
bool AllNewOnesGo(const std::set<fs::path>& before) {
    for (int i = 0; i < 500; ++i) {
        const std::set<fs::path> now = PrivateFolders();
        if (std::ranges::includes(before, now))
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

Bytes AsBytes(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

std::int16_t Sample(const Bytes& pcm, std::size_t index) {
    return static_cast<std::int16_t>(pcm.at(2 * index) | pcm.at(2 * index + 1) << 8);
}

int LargestDifference(const Bytes& one, const Bytes& two) {
    int largest = 0;
    for (std::size_t i = 0; i < std::min(one.size(), two.size()) / 2; ++i)
        largest = std::max(largest, std::abs(Sample(one, i) - Sample(two, i)));
    return largest;
}

double MeanDifference(const Bytes& one, const Bytes& two) {
    double sum = 0;
    const std::size_t values = std::min(one.size(), two.size()) / 2;
    for (std::size_t i = 0; i < values; ++i)
        sum += std::abs(Sample(one, i) - Sample(two, i));
    return sum / static_cast<double>(values);
}

class DecoderChoiceTest : public test::ToolTest {
protected:
    void AddSample(const std::string& name) {
        Add(name, test::ReadFile(test::SourceFolder() / "samples" / name));
    }

    ProcessResult Decode(const std::string& file, const std::vector<std::string>& further) const {
        return Run(Arguments(file, further));
    }

    static std::vector<std::string> Arguments(const std::string& file,
                                              const std::vector<std::string>& further) {
        std::vector<std::string> arguments = {"decode", file, "-o", "-", "--format", "raw"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        return arguments;
    }

    /// Copies a built file, and the external decoder's library that may stand beside it.
    fs::path Copy(const fs::path& file, const std::string& folder, bool companion) const {
        fs::create_directories(Folder() / folder);
        const fs::path copy = Folder() / folder / file.filename();
        fs::copy_file(file, copy, fs::copy_options::skip_existing);
        for (const fs::directory_entry& entry : fs::directory_iterator(file.parent_path())) {
            if (companion && entry.path().filename().string().find("mpg123") != std::string::npos)
                fs::copy_file(entry.path(), copy.parent_path() / entry.path().filename(),
                              fs::copy_options::skip_existing);
        }
        return copy;
    }

    static fs::path BuiltModule() { return std::getenv("TRN_MODULE"); }

    void ChooseIn(const std::string& folder, int decoder) const {
        const std::string text = "[CODEC]\nMP3DecoderUse=" + std::to_string(decoder) + "\n";
        test::WriteFile(Folder() / folder / "trnfsdk.ini", AsBytes(text));
    }

    /// Decodes with `--decoder` as it stands in the arguments; skips what no such decoder can show.
    static void ExpectNoDecoder(const ProcessResult& result) {
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_THAT(result.output, IsEmpty());
        EXPECT_THAT(result.error, HasSubstr("the module has no external decoder"));
        EXPECT_THAT(result.error, HasSubstr("-2322"));
    }
};

TEST_F(DecoderChoiceTest, ExternalDecoderGivesItsOwnStream) {
    AddSample("music.mp3");
    const std::set<fs::path> before = PrivateFolders();
    const ProcessResult external = Decode("music.mp3", {"--decoder", "external"});
    EXPECT_TRUE(AllNewOnesGo(before));
    if (!kHasExternal)
        return ExpectNoDecoder(external);
    ASSERT_EQ(external.exitStatus, 0) << external.error;
    EXPECT_THAT(external.error, IsEmpty());
    const Bytes one = AsBytes(external.output);
    ASSERT_EQ(one.size(), (kSampleFrames * test::kFrameSamples - kExternalDelay) * kBytesPerSample);

    const ProcessResult builtIn = Decode("music.mp3", {"--decoder", "builtin"});
    ASSERT_EQ(builtIn.exitStatus, 0) << builtIn.error;
    EXPECT_EQ(builtIn.output, Decode("music.mp3", {}).output);
    // It leaves out less of the same stream.
    const std::size_t more = (test::kLayer3Delay - kExternalDelay) * kBytesPerSample;
    ASSERT_EQ(builtIn.output.size() + more, one.size());
    const Bytes two = AsBytes(builtIn.output);
    EXPECT_LT(20 * MeanDifference(Bytes(one.begin() + static_cast<std::ptrdiff_t>(more), one.end()), two),
              MeanDifference(one, two));
}

TEST_F(DecoderChoiceTest, BothAgreeOnLayer2) {
    if (!kHasExternal)
        GTEST_SKIP() << "built without the external decoder";
    AddSample("music.mp2");
    const ProcessResult external = Decode("music.mp2", {"--decoder", "external"});
    ASSERT_EQ(external.exitStatus, 0) << external.error;
    const ProcessResult builtIn = Decode("music.mp2", {});
    ASSERT_EQ(external.output.size(), builtIn.output.size());
    EXPECT_LE(LargestDifference(AsBytes(external.output), AsBytes(builtIn.output)), 2);
    EXPECT_NE(external.output, builtIn.output) << "two decoders, not one";
}

TEST_F(DecoderChoiceTest, SettingsBesideTheModuleAreLeftAlone) {
    AddSample("music.mp2");
    const fs::path module = Copy(BuiltModule(), "module", true);
    ChooseIn("module", 1);
    const Bytes settings = Read("module/trnfsdk.ini");
    const auto files = [&] {
        return std::distance(fs::directory_iterator(module.parent_path()), fs::directory_iterator());
    };
    const auto count = files();
    const ProcessResult other = Decode("music.mp2", {"--module", module.string(), "--decoder", "builtin"});
    EXPECT_EQ(other.exitStatus, 0) << other.error;
    EXPECT_EQ(other.output, Decode("music.mp2", {}).output);
    EXPECT_EQ(Read("module/trnfsdk.ini"), settings);
    EXPECT_EQ(files(), count);

    const ProcessResult own = Decode("music.mp2", {"--module", module.string()});
    if (!kHasExternal)
        return ExpectNoDecoder(own);
    EXPECT_EQ(own.output, Decode("music.mp2", {"--decoder", "external"}).output);
    EXPECT_NE(own.output, other.output);
}

TEST_F(DecoderChoiceTest, InfoAndFramesCountAsTheSettingsSay) {
    AddSample("music.mp3");
    const fs::path module = Copy(BuiltModule(), "module", true);
    ChooseIn("module", 1);
    EXPECT_THAT(Run({"info", "--module", module.string(), "music.mp3"}).output,
                HasSubstr("decoder delay     529 samples\n"));
    EXPECT_THAT(Run({"frames", "--module", module.string(), "--json", "music.mp3"}).output,
                HasSubstr("\"delaySamples\": 529"));
    ChooseIn("module", 0);
    EXPECT_THAT(Run({"frames", "--module", module.string(), "--json", "music.mp3"}).output,
                HasSubstr("\"delaySamples\": 1100"));
}

TEST_F(DecoderChoiceTest, ModuleWithoutTheLibraryBesideIt) {
    if (fs::path::preferred_separator != '\\')
        GTEST_SKIP() << "the system's loader finds the library wherever the module stands";
    AddSample("music.mp2");
    const fs::path module = Copy(BuiltModule(), "module", false);
    ExpectNoDecoder(Decode("music.mp2", {"--module", module.string(), "--decoder", "external"}));
}

TEST_F(DecoderChoiceTest, SettingsBesideTheProgramCannotBeOverruled) {
    AddSample("music.mp2");
    const fs::path tool = Copy(test::ToolPath(), "bin", false);
    ChooseIn("bin", 1);
    const auto run = [&](const std::vector<std::string>& further) {
        std::vector<std::string> arguments = Arguments("music.mp2", further);
        arguments.insert(arguments.begin(), {"--module", BuiltModule().string()});
        return test::RunProcess(tool, arguments, Folder());
    };
    const ProcessResult refused = run({"--decoder", "builtin"});
    EXPECT_EQ(refused.exitStatus, 1);
    EXPECT_THAT(refused.error, HasSubstr("trnfsdk.ini: stands beside this program and says another decoder"));
    EXPECT_THAT(refused.output, IsEmpty());
    if (kHasExternal) {
        EXPECT_EQ(run({"--decoder", "external"}).output, run({}).output);
    }
}

TEST_F(DecoderChoiceTest, InterruptTakesThePrivateFolderAway) {
    AddPlanned("slow.mp3", test::SilentLayer3(120), {{"delay", 300}});
    const std::set<fs::path> before = PrivateFolders();
    test::RunningProcess process =
        StartCounting({"decode", "slow.mp3", "-o", "out.wav", "--decoder", "external"});
    for (int i = 0; i < 4000 && NewFiles().empty(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ASSERT_FALSE(NewFiles().empty());
    if (!process.Interrupt())
        GTEST_SKIP() << "no console to send the interrupt through";
    EXPECT_EQ(process.Finish().exitStatus, 130);
    EXPECT_TRUE(AllNewOnesGo(before));
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(DecoderChoiceTest, UnknownDecoder) {
    AddPlanned("a.mp3", test::SilentLayer3(4), {});
    const ProcessResult result = RunCounting({"decode", "a.mp3", "-o", "out.wav", "--decoder", "lame"});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_THAT(result.error, HasSubstr("--decoder"));
}

} // namespace
