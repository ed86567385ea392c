/// A device that takes nothing: the tool says so.
#include "tools/tool_fixture.h"

#include <gmock/gmock.h>

namespace {

class FullDevice : public test::ToolTest {};

TEST_F(FullDevice, IsReported) {
    Add("long.mp3", test::SilentLayer3(500));
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"decode", "long.mp3", "-o", "/dev/full", "--force"},
          std::vector<std::string>{"slices", "--time", "40", "long.mp3", "-o", "/dev/full", "--force"}}) {
        const test::ProcessResult result = Run(arguments);
        EXPECT_EQ(result.exitStatus, 1) << arguments.front();
        EXPECT_THAT(result.error, testing::HasSubstr("/dev/full")) << arguments.front();
    }
}

} // namespace
