/// Other programs, run by tests.
#pragma once

#include "os/child_process.h"
#include "support/test_files.h"

#include <filesystem>
#include <string>
#include <vector>

namespace test {

/// What is left of a program that has ended.
struct ProcessResult {
    int exitStatus = 0;
    std::string output; ///< bytes of standard output
    std::string error;  ///< text of standard error, its line ends as "\n"
};

/// A running program. Its arguments are UTF-8 text. The destructor waits for its end.
class RunningProcess {
public:
    /// Throws when the program cannot be run.
    RunningProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                   const std::filesystem::path& workingFolder);

    /// Stops listening to its output: its next write finds a closed pipe.
    void CloseOutput() { process_.CloseOutput(); }

    /// Waits for the first `bytes` of output; gives what came, less only when the program ended its output.
    std::string ReadOutput(std::size_t bytes);

    /// As a keyboard interrupt. False where the system has no way to do so; the program is then ended at
    /// once.
    bool Interrupt();

    /// Reads the rest of the output, waits for the end.
    ProcessResult Finish();

private:
    ScratchFolder folder_;
    os::ChildProcess process_;
};

/// Runs a program to its end.
ProcessResult RunProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                         const std::filesystem::path& workingFolder);

} // namespace test
