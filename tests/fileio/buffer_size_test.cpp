#include "os/paths.h"
#include "platform/path_samples.h"
#include "support/subprocess.h"
#include "support/test_files.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace {

namespace fs = std::filesystem;

/// A program in a folder of its own, so that no other test sees the settings file.
class BufferSize : public testing::Test {
protected:
    BufferSize() {
        const fs::path self = test::Plain(os::ExecutablePath());
        const fs::path name = fs::path("buffer_size_probe").replace_extension(self.extension());
        program_ = fs::absolute(scratch_.Path() / name);
        fs::copy_file(self.parent_path() / name, program_);
    }

    std::string OutputWith(const std::string& settings) {
        scratch_.Add("trnfsdk.ini", test::Bytes(settings.begin(), settings.end()));
        return Output();
    }
    std::string Output() {
        const test::ProcessResult result = test::RunProcess(program_, {}, test::BinaryFolder());
        EXPECT_EQ(result.exitStatus, 0) << result.error;
        std::string output = result.output;
        std::erase(output, '\r');
        return output;
    }

    const test::ScratchFolder scratch_;
    fs::path program_;
};

TEST_F(BufferSize, IsHalfAMebibyteWithoutSettings) {
    EXPECT_EQ(Output(), "seek 0 0\nread 524288\n");
    EXPECT_EQ(OutputWith("[FILERW]\nReadBufSize=0\n"), "seek 0 0\nread 524288\n");
    EXPECT_EQ(OutputWith("[FILERW]\nReadBufSize=-5\n"), "seek 0 0\nread 524288\n");
}

TEST_F(BufferSize, IsWhatTheSettingsSay) {
    EXPECT_EQ(OutputWith("[FILERW]\nReadBufSize=64\n"), "seek 0 0\nread 65536\n");
    EXPECT_EQ(OutputWith("[FILERW]\nReadBufSize=1\n"), "seek 0 0\nread 1024\n");
}

TEST_F(BufferSize, Saturates) {
    EXPECT_EQ(OutputWith("[FILERW]\nReadBufSize=4194305\n"), "seek 0 0\nread 2147483647\n");
    EXPECT_EQ(OutputWith("[FILERW]\nReadBufSize=2147483647\n"), "seek 0 0\nread 2147483647\n");
}

} // namespace
