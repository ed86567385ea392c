/// `mpatool selftest` on the built module and on modules that break the contract.

#include "tools/tool_fixture.h"

#include <cstdlib>

namespace {

class SelftestTest : public test::ToolTest {
protected:
    /// The module that is broken as `how` says; "nothing": one that just passes calls on.
    test::ProcessResult RunBroken(const std::string& how) const {
        const std::filesystem::path modules = std::getenv("TRN_BROKEN_MODULES");
        for (const auto& entry : std::filesystem::directory_iterator(modules)) {
            if (entry.path().stem().string().ends_with("broken_" + how))
                return Run({"selftest", "--module", entry.path().string()});
        }
        ADD_FAILURE() << "no module broken in " << how;
        return {};
    }
};

std::size_t LinesWith(const std::string& text, const std::string& beginning) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(beginning, at)) != std::string::npos; ++at)
        count += at == 0 || text[at - 1] == '\n' ? 1 : 0;
    return count;
}

} // namespace

TEST_F(SelftestTest, TheBuiltModuleIsGood) {
    const auto result = Run({"selftest"});
    EXPECT_EQ(result.exitStatus, 0) << result.output << result.error;
    EXPECT_EQ(LinesWith(result.output, "BAD"), 0u);
    EXPECT_GT(LinesWith(result.output, "good  "), 90u);
    EXPECT_NE(result.output.find("checks, all good"), std::string::npos);
}

TEST_F(SelftestTest, PassingCallsOnIsGood) {
    const auto result = RunBroken("nothing");
    EXPECT_EQ(result.exitStatus, 0) << result.output << result.error;
}

TEST_F(SelftestTest, AWrongByteInTheModulesRecord) {
    const auto result = RunBroken("module_record");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(LinesWith(result.output, "BAD   module: record of 132 bytes: byte 8 differs"), 1u)
        << result.output;
    EXPECT_EQ(LinesWith(result.output, "BAD"), 1u) << result.output;
}

TEST_F(SelftestTest, AWrongByteInTheReadersRecord) {
    const auto result = RunBroken("reader_record");
    EXPECT_EQ(result.exitStatus, 1);
    // One for each class.
    EXPECT_EQ(LinesWith(result.output, "BAD"), 3u) << result.output;
    EXPECT_NE(result.output.find("record of 64 bytes: byte 63 differs"), std::string::npos);
}

TEST_F(SelftestTest, AWrongSlot) {
    const auto result = RunBroken("slot");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_GE(LinesWith(result.output, "BAD"), 1u) << result.output;
}

TEST_F(SelftestTest, AWrongBitInTheSamples) {
    const auto result = RunBroken("pcm");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_GE(LinesWith(result.output, "BAD   layer3.mp3: 40000 samples have digest"), 1u) << result.output;
    EXPECT_GE(LinesWith(result.output, "BAD   layer2.mp2: 25000 samples have digest"), 1u) << result.output;
}

TEST_F(SelftestTest, SomethingElseThanAModule) {
    Add("song.mp3", test::SilentLayer3(3));
    const auto text = Run({"selftest", "--module", "song.mp3"});
    EXPECT_EQ(text.exitStatus, 1);
    EXPECT_EQ(LinesWith(text.output, "BAD   the module can be loaded: "), 1u) << text.output;
    const auto missing = Run({"selftest", "--module", "nowhere.so"});
    EXPECT_EQ(missing.exitStatus, 1);
    EXPECT_NE(missing.error.find("nowhere.so"), std::string::npos) << missing.error;
}
