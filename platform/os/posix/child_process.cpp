#include "os/child_process.h"

#include "os/paths.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

extern char** environ;

namespace os {

namespace {

/// What posix_spawn does in the new process before the program starts.
class SpawnActions {
public:
    SpawnActions() { posix_spawn_file_actions_init(&actions_); }
    ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    posix_spawn_file_actions_t* Get() { return &actions_; }

    void Fill(const ChildProcessSetup& setup, int output) {
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, NarrowToUtf8(setup.errorFile).c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0666);
        if (!setup.workingFolder.empty())
            posix_spawn_file_actions_addchdir_np(&actions_, NarrowToUtf8(setup.workingFolder).c_str());
    }

private:
    posix_spawn_file_actions_t actions_ = {};
};

bool MakePipe(int (&ends)[2]) {
    return pipe2(ends, O_CLOEXEC) == 0;
}

int StatusOf(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

bool ChildProcess::Start(const ChildProcessSetup& setup) {
    int ends[2] = {};
    if (process_ != kNone || !MakePipe(ends))
        return false;
    SpawnActions actions;
    actions.Fill(setup, ends[1]);

    std::vector<std::string> words = {NarrowToUtf8(setup.program)};
    words.reserve(setup.arguments.size() + 1);
    for (const std::wstring& argument : setup.arguments)
        words.push_back(NarrowToUtf8(argument));
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);

    pid_t child = 0;
    const int error = posix_spawn(&child, pointers[0], actions.Get(), nullptr, pointers.data(), environ);
    close(ends[1]);
    output_ = ends[0];
    if (error == 0)
        process_ = child;
    else
        CloseOutput();
    return error == 0;
}

std::size_t ChildProcess::ReadOutput(std::span<std::uint8_t> destination) {
    if (output_ == kNone)
        return 0;
    ssize_t bytes = -1;
    do {
        bytes = read(static_cast<int>(output_), destination.data(), destination.size());
    } while (bytes < 0 && errno == EINTR);
    return bytes > 0 ? static_cast<std::size_t>(bytes) : 0;
}

void ChildProcess::CloseOutput() {
    if (output_ != kNone)
        close(static_cast<int>(std::exchange(output_, kNone)));
}

bool ChildProcess::Interrupt() {
    return process_ != kNone && kill(static_cast<pid_t>(process_), SIGINT) == 0;
}

void ChildProcess::Kill() {
    if (process_ != kNone)
        kill(static_cast<pid_t>(process_), SIGKILL);
}

int ChildProcess::Wait() {
    CloseOutput();
    const auto child = static_cast<pid_t>(std::exchange(process_, kNone));
    if (child == kNone)
        return exitStatus_;
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    exitStatus_ = StatusOf(status);
    return exitStatus_;
}

} // namespace os
