#include "support/subprocess.h"

#include "os/error_text.h"
#include "os/paths.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <thread>

namespace test {

namespace fs = std::filesystem;

namespace {

constexpr const char* kErrorFile = "stderr.txt";

// Under Wine a start has failed, rarely, before the program ran at all.
constexpr int kStartAttempts = 3;
constexpr std::chrono::milliseconds kPauseBetweenStarts{200};

std::string TextOf(const fs::path& file) {
    std::string text;
    for (const std::uint8_t byte : ReadFile(file)) {
        if (byte != '\r')
            text += static_cast<char>(byte);
    }
    return text;
}

} // namespace

RunningProcess::RunningProcess(const fs::path& program, const std::vector<std::string>& arguments,
                               const fs::path& workingFolder) {
    os::ChildProcessSetup setup;
    setup.program = Wide(program);
    for (const std::string& argument : arguments)
        setup.arguments.push_back(os::WidenUtf8(argument));
    setup.workingFolder = Wide(workingFolder);
    setup.errorFile = Wide(folder_.Path() / kErrorFile);
    for (int attempt = 1; !process_.Start(setup); ++attempt) {
        const std::string failure =
            "cannot run " + program.string() + ": " + os::NarrowToUtf8(os::LastErrorText());
        if (attempt == kStartAttempts)
            throw std::runtime_error(failure);
        std::fprintf(stderr, "%s (attempt %d of %d)\n", failure.c_str(), attempt, kStartAttempts);
        std::this_thread::sleep_for(kPauseBetweenStarts);
    }
}

std::string RunningProcess::ReadOutput(std::size_t bytes) {
    std::string output;
    std::vector<std::uint8_t> part(65536);
    while (output.size() < bytes) {
        const std::size_t read =
            process_.ReadOutput(std::span(part).first(std::min(part.size(), bytes - output.size())));
        if (read == 0)
            break;
        output.append(reinterpret_cast<const char*>(part.data()), read);
    }
    return output;
}

bool RunningProcess::Interrupt() {
    if (process_.Interrupt())
        return true;
    process_.Kill();
    return false;
}

ProcessResult RunningProcess::Finish() {
    ProcessResult result;
    result.output = ReadOutput(std::string::npos);
    result.exitStatus = process_.Wait();
    result.error = TextOf(folder_.Path() / kErrorFile);
    return result;
}

ProcessResult RunProcess(const fs::path& program, const std::vector<std::string>& arguments,
                         const fs::path& workingFolder) {
    return RunningProcess(program, arguments, workingFolder).Finish();
}

} // namespace test
