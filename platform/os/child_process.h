/// Other programs, run and watched.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace os {

/// What to run and how.
struct ChildProcessSetup {
    std::wstring program;                ///< full path
    std::vector<std::wstring> arguments; ///< without the program's name
    std::wstring workingFolder;          ///< empty: this process's own
    std::wstring errorFile;              ///< made or emptied; takes the program's standard error
};

/// A running program. Its standard input is empty, its standard output a pipe that this object reads.
class ChildProcess {
public:
    ChildProcess() = default;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    /// Waits for the program's end.
    ~ChildProcess() { Wait(); }

    /// Runs the program; once for each object. False when it cannot be run.
    bool Start(const ChildProcessSetup& setup);

    /// Waits for output; gives the bytes read, 0 when the program has closed its end or
    /// CloseOutput was called.
    std::size_t ReadOutput(std::span<std::uint8_t> destination);
    /// Stops listening: the program's next write finds a closed pipe.
    void CloseOutput();

    /// Asks the program to stop, as a keyboard interrupt does. False where the system has no way to do so.
    bool Interrupt();
    /// Ends the program at once.
    void Kill();

    /// Closes the output, waits for the end and gives the exit status; where a signal ended the program, 128
    /// and the signal's number.
    int Wait();

private:
    static constexpr std::intptr_t kNone = -1;
    std::intptr_t process_ = kNone;
    std::intptr_t output_ = kNone;
    int exitStatus_ = kNotRun;

    static constexpr int kNotRun = -1;
};

} // namespace os
