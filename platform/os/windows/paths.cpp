#include "os/paths.h"

#include "os/windows/extended_path.h"

#include <atomic>
#include <io.h>
#include <memory>
#include <windows.h>

// Needs windows.h first.
#include <psapi.h>

namespace os {

const wchar_t kPathSeparator = L'\\';

namespace {

constexpr DWORD kFullProcessAccess = 0x1FFFFF;
constexpr std::size_t kLongestPath = 32768;

std::atomic<HMODULE> moduleInstance = nullptr;

struct CloseProcess {
    void operator()(HANDLE process) const { CloseHandle(process); }
};
using Process = std::unique_ptr<void, CloseProcess>;

/// Closing the pseudo-handle that stands in when the process cannot be opened does nothing.
Process OpenThisProcess() {
    const HANDLE process = OpenProcess(kFullProcessAccess, FALSE, GetCurrentProcessId());
    return Process(process != nullptr ? process : GetCurrentProcess());
}

/// Path of a module of this process; null names the program itself.
std::wstring PathOf(HMODULE instance) {
    const Process process = OpenThisProcess();
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameExW(process.get(), instance, path.data(), static_cast<DWORD>(path.size()));
        // A path that fills the buffer may have been cut.
        if (length < path.size() - 1 || path.size() >= kLongestPath) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

} // namespace

std::wstring ExecutablePath() {
    return PathOf(nullptr);
}

std::wstring ModulePath() {
    return PathOf(moduleInstance);
}

void SetModuleInstance(void* instance) {
    moduleInstance = static_cast<HMODULE>(instance);
}

bool IsReadable(const std::wstring& path) {
    constexpr int kReadAccess = 4;
    const std::wstring name = ExtendedPath(path);
    return !name.empty() && _waccess(name.c_str(), kReadAccess) == 0;
}

} // namespace os
