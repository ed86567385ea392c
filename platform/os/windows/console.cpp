#include "os/console.h"

#include "os/paths.h"

#include <windows.h>

// clang-format off: shellapi.h needs windows.h first
#include <shellapi.h>
// clang-format on

#include <algorithm>
#include <atomic>

namespace os {

namespace {

std::atomic<bool> g_interrupted = false;

BOOL WINAPI NoteInterrupt(DWORD event) {
    g_interrupted = true;
    // The system ends the process when the handler of these events returns; the main thread needs time to
    // clean up.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(5000);
    return TRUE;
}

bool IsConsole(DWORD stream) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(stream), &mode) != 0;
}

} // namespace

std::vector<std::string> CommandLineArguments(int, char**) {
    int count = 0;
    wchar_t** values = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 0; values != nullptr && i < count; ++i)
        arguments.push_back(NarrowToUtf8(values[i]));
    LocalFree(values);
    return arguments;
}

bool IsOutputTerminal() {
    return IsConsole(STD_OUTPUT_HANDLE);
}

bool IsErrorTerminal() {
    return IsConsole(STD_ERROR_HANDLE);
}

int ErrorTerminalColumns() {
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info) == 0)
        return 0;
    return info.srWindow.Right - info.srWindow.Left + 1;
}

void WriteErrorText(std::string_view text) {
    const HANDLE stream = GetStdHandle(STD_ERROR_HANDLE);
    DWORD written = 0;
    if (IsErrorTerminal()) {
        const std::wstring wide = WidenUtf8(text);
        WriteConsoleW(stream, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr);
        return;
    }
    WriteFile(stream, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

std::optional<std::size_t> ReadStandardInput(std::span<std::uint8_t> destination) {
    constexpr std::size_t kMostBytes = std::size_t{1} << 20;
    DWORD bytes = 0;
    const auto wanted = static_cast<DWORD>(std::min(destination.size(), kMostBytes));
    const BOOL good = ReadFile(GetStdHandle(STD_INPUT_HANDLE), destination.data(), wanted, &bytes, nullptr);
    if (InterruptRequested())
        return std::nullopt;
    // How a pipe ends whose other end was closed.
    const bool isEnd = good == 0 && GetLastError() == ERROR_BROKEN_PIPE;
    return good != 0 || isEnd ? std::optional<std::size_t>(bytes) : std::nullopt;
}

void PrepareProcess() {
    SetConsoleCtrlHandler(NoteInterrupt, TRUE);
}

bool InterruptRequested() {
    return g_interrupted;
}

void EndByInterrupt() {
    // As a shell of other systems tells it.
    constexpr UINT kInterruptedStatus = 130;
    ExitProcess(kInterruptedStatus);
}

} // namespace os
