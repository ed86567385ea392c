/// `mpatool decode --kernels`.

#include "mpatool/decode/kernel_choice.h"
#include "support/loaded_module.h"
#include "tools/tool_fixture.h"
#include "trnmpafileread/c_api.h"

#include <gmock/gmock.h>

namespace {

using test::ProcessResult;
using testing::HasSubstr;
using testing::IsEmpty;

class KernelChoiceTest : public test::ToolTest {
protected:
    KernelChoiceTest() {
        for (const char* name : {"music.mp3", "music.mp2"})
            Add(name, test::ReadFile(test::SourceFolder() / "samples" / name));
    }

    ProcessResult Decode(const std::string& file, const std::vector<std::string>& further) const {
        std::vector<std::string> arguments = {"decode", file, "-o", "-", "--format", "raw"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        return Run(arguments);
    }

    static bool IsAvailable(std::uint32_t kernels) {
        test::LoadedModule module;
        const auto available =
            module.Library().FunctionNamed<decltype(&trnmpa_kernels_available)>("trnmpa_kernels_available");
        return kernels == TRNMPA_KERNELS_ALL || (available() & kernels) != 0;
    }
};

TEST_F(KernelChoiceTest, AllGiveTheSamePcm) {
    for (const char* file : {"music.mp3", "music.mp2"}) {
        const ProcessResult expected = Decode(file, {});
        ASSERT_EQ(expected.exitStatus, 0) << expected.error;
        ASSERT_GT(expected.output.size(), 500'000u);
        for (const std::string& name : mpatool::KernelNames()) {
            const ProcessResult found = Decode(file, {"--kernels", name});
            if (IsAvailable(mpatool::KernelsByName(name))) {
                EXPECT_EQ(found.exitStatus, 0) << found.error;
                EXPECT_THAT(found.error, IsEmpty());
                EXPECT_TRUE(found.output == expected.output) << file << ' ' << name;
            } else {
                EXPECT_EQ(found.exitStatus, 1);
                EXPECT_THAT(found.error, HasSubstr("no such kernels as --kernels asks for"));
                EXPECT_THAT(found.output, IsEmpty());
            }
        }
    }
}

TEST_F(KernelChoiceTest, NamesAreDifferentSets) {
    std::vector<std::uint32_t> masks;
    for (const std::string& name : mpatool::KernelNames())
        masks.push_back(mpatool::KernelsByName(name));
    EXPECT_THAT(masks, testing::ElementsAre(TRNMPA_KERNELS_PLAIN, TRNMPA_KERNELS_SSE2, TRNMPA_KERNELS_AVX2,
                                            TRNMPA_KERNELS_ALL));
}

TEST_F(KernelChoiceTest, UnknownKernels) {
    const ProcessResult result = Decode("music.mp3", {"--kernels", "mmx"});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_THAT(result.error, HasSubstr("--kernels"));
    EXPECT_THAT(result.error, HasSubstr("mmx"));
    EXPECT_THAT(result.output, IsEmpty());
}

TEST_F(KernelChoiceTest, ModuleWithoutAChoice) {
    AddPlanned("a.mp3", test::SilentLayer3(4), {});
    const ProcessResult result = RunCounting({"decode", "a.mp3", "-o", "out.wav", "--kernels", "plain"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.error, HasSubstr("the module does not let its kernels be chosen"));
    EXPECT_THAT(NewFiles(), IsEmpty());
    EXPECT_EQ(RunCounting({"decode", "a.mp3", "-o", "out.wav"}).exitStatus, 0);
}

} // namespace
