#include "os/child_process.h"

#include "os/windows/extended_path.h"

#include <string>
#include <utility>
#include <windows.h>

namespace os {

namespace {

HANDLE ToHandle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

/// A word of a command line in the form that CommandLineToArgvW reads back.
std::wstring Quoted(const std::wstring& word) {
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t unit : word) {
        if (unit == L'"')
            quoted.append(backslashes + 1, L'\\');
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
        quoted += unit;
    }
    return quoted.append(backslashes, L'\\') + L'"';
}

std::wstring CommandLine(const ChildProcessSetup& setup) {
    std::wstring line = Quoted(setup.program);
    for (const std::wstring& argument : setup.arguments)
        line += L' ' + Quoted(argument);
    return line;
}

/// The program's three streams; this process's copies are closed at the end of the object's life.
struct Streams {
    HANDLE input = INVALID_HANDLE_VALUE;
    HANDLE output = INVALID_HANDLE_VALUE;
    HANDLE error = INVALID_HANDLE_VALUE;

    ~Streams() {
        for (const HANDLE handle : {input, output, error}) {
            if (handle != INVALID_HANDLE_VALUE)
                CloseHandle(handle);
        }
    }

    /// Opens all three; `*readEnd` becomes the other end of the output.
    bool Open(const std::wstring& errorFile, HANDLE* readEnd) {
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        if (CreatePipe(readEnd, &output, &inherited, 0) == 0)
            return false;
        SetHandleInformation(*readEnd, HANDLE_FLAG_INHERIT, 0);
        input = CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                            OPEN_EXISTING, 0, nullptr);
        error = CreateFileW(ExtendedPath(errorFile).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                            CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        return input != INVALID_HANDLE_VALUE && error != INVALID_HANDLE_VALUE;
    }
};

} // namespace

bool ChildProcess::Start(const ChildProcessSetup& setup) {
    Streams streams;
    HANDLE readEnd = INVALID_HANDLE_VALUE;
    if (process_ != kNone || !streams.Open(setup.errorFile, &readEnd))
        return false;
    output_ = reinterpret_cast<std::intptr_t>(readEnd);

    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = streams.input;
    startup.hStdOutput = streams.output;
    startup.hStdError = streams.error;
    PROCESS_INFORMATION process = {};
    std::wstring line = CommandLine(setup);
    const wchar_t* folder = setup.workingFolder.empty() ? nullptr : setup.workingFolder.c_str();
    if (CreateProcessW(setup.program.c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_NEW_PROCESS_GROUP,
                       nullptr, folder, &startup, &process) == 0) {
        CloseOutput();
        return false;
    }
    CloseHandle(process.hThread);
    process_ = reinterpret_cast<std::intptr_t>(process.hProcess);
    return true;
}

std::size_t ChildProcess::ReadOutput(std::span<std::uint8_t> destination) {
    if (output_ == kNone)
        return 0;
    DWORD bytes = 0;
    const auto wanted = static_cast<DWORD>(destination.size());
    return ReadFile(ToHandle(output_), destination.data(), wanted, &bytes, nullptr) != 0 ? bytes : 0;
}

void ChildProcess::CloseOutput() {
    if (output_ != kNone)
        CloseHandle(ToHandle(std::exchange(output_, kNone)));
}

bool ChildProcess::Interrupt() {
    return process_ != kNone &&
           GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, GetProcessId(ToHandle(process_))) != 0;
}

void ChildProcess::Kill() {
    constexpr UINT kStatus = 137;
    if (process_ != kNone)
        TerminateProcess(ToHandle(process_), kStatus);
}

int ChildProcess::Wait() {
    CloseOutput();
    const std::intptr_t process = std::exchange(process_, kNone);
    if (process == kNone)
        return exitStatus_;
    WaitForSingleObject(ToHandle(process), INFINITE);
    DWORD status = 0;
    GetExitCodeProcess(ToHandle(process), &status);
    CloseHandle(ToHandle(process));
    exitStatus_ = static_cast<int>(status);
    return exitStatus_;
}

} // namespace os
