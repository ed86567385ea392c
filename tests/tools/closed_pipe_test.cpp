/// Nobody reads the tool's output any more: it ends quietly, with status 1.
#include "tools/tool_fixture.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

class ClosedPipe : public test::ToolTest {
protected:
    void SetUp() override { Add("long.mp3", test::SilentLayer3(20'000)); }

    /// Closes the output behind `bytes` of it.
    void ExpectQuietEnd(const std::vector<std::string>& arguments, std::size_t bytes) {
        test::RunningProcess process(test::ToolPath(), arguments, Folder());
        EXPECT_EQ(process.ReadOutput(bytes).size(), bytes);
        process.CloseOutput();
        const test::ProcessResult result = process.Finish();
        EXPECT_EQ(result.exitStatus, 1) << arguments.front();
        EXPECT_THAT(result.error, testing::IsEmpty()) << arguments.front();
    }
};

TEST_F(ClosedPipe, EndsEachCommand) {
    for (const std::size_t bytes : {0, 4}) {
        ExpectQuietEnd({"decode", "long.mp3", "-o", "-"}, bytes);
        ExpectQuietEnd({"slices", "--time", "40", "long.mp3", "-o", "-"}, bytes);
        ExpectQuietEnd({"frames", "--csv", "long.mp3"}, bytes);
    }
    // More text than a pipe holds.
    std::vector<std::string> arguments = {"info", "--json"};
    arguments.insert(arguments.end(), 400, "long.mp3");
    ExpectQuietEnd(arguments, 0);
}

} // namespace
