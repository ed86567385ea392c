#include "os/console.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace os {

namespace {

constexpr int kInterrupts[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t g_interrupt = 0;

void NoteInterrupt(int number) {
    g_interrupt = number;
}

/// Fills closed ones with something that cannot be used in their direction.
void HoldStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0)
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

} // namespace

std::vector<std::string> CommandLineArguments(int count, char** values) {
    return std::vector<std::string>(values, values + count);
}

bool IsOutputTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

bool IsErrorTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

int ErrorTerminalColumns() {
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

void WriteErrorText(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
        if (written <= 0)
            return;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

std::optional<std::size_t> ReadStandardInput(std::span<std::uint8_t> destination) {
    while (!InterruptRequested()) {
        const ssize_t bytes = read(STDIN_FILENO, destination.data(), destination.size());
        if (bytes >= 0)
            return static_cast<std::size_t>(bytes);
        if (errno != EINTR)
            return std::nullopt;
    }
    return std::nullopt;
}

void PrepareProcess() {
    HoldStandardStreams();
    // Both are answered where the write fails.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int number : kInterrupts) {
        struct sigaction earlier = {};
        sigaction(number, nullptr, &earlier);
        if (earlier.sa_handler == SIG_IGN) // as under nohup
            continue;
        struct sigaction action = {};
        action.sa_handler = NoteInterrupt; // without SA_RESTART, so that a blocking write returns
        sigemptyset(&action.sa_mask);
        sigaction(number, &action, nullptr);
    }
}

bool InterruptRequested() {
    return g_interrupt != 0;
}

void EndByInterrupt() {
    const int number = g_interrupt != 0 ? static_cast<int>(g_interrupt) : SIGINT;
    std::signal(number, SIG_DFL);
    std::raise(number);
    std::_Exit(128 + number);
}

} // namespace os
