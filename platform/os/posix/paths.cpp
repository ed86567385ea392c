#include "os/paths.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <memory>
#include <sstream>
#include <unistd.h>

namespace os {

const wchar_t kPathSeparator = L'/';

namespace {

/// File that the system mapped at `address`. dladdr gives the name that the loader was asked for, which may
/// be relative to a folder that is no longer the current one; the system's own list does not.
std::string MappedFileAt(std::uintptr_t address) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream fields(line);
        std::uintptr_t start = 0;
        std::uintptr_t end = 0;
        char dash = 0;
        std::string ignored;
        std::string path;
        fields >> std::hex >> start >> dash >> end >> ignored >> ignored >> ignored >> ignored >> std::ws;
        if (address >= start && address < end && std::getline(fields, path))
            return path;
    }
    return {};
}

std::string Resolved(const char* path) {
    const std::unique_ptr<char, void (*)(void*)> full(::realpath(path, nullptr), std::free);
    return full != nullptr ? full.get() : "";
}

std::string ModuleName() {
    const auto here = reinterpret_cast<std::uintptr_t>(&ModulePath);
    Dl_info info = {};
    const bool known = ::dladdr(reinterpret_cast<void*>(here), &info) != 0 && info.dli_fname != nullptr;
    if (known && *info.dli_fname == '/')
        return info.dli_fname;
    const std::string mapped = MappedFileAt(here);
    return mapped.empty() && known ? Resolved(info.dli_fname) : mapped;
}

} // namespace

std::wstring FullPath(const std::wstring& path) {
    // See ModuleName: a full name stays as it is, another is looked up.
    return path.starts_with(kPathSeparator) ? path : WidenUtf8(Resolved(NarrowToUtf8(path).c_str()));
}

std::wstring ExecutablePath() {
    std::string path(PATH_MAX, '\0');
    const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
    path.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    return WidenUtf8(path);
}

std::wstring ModulePath() {
    return WidenUtf8(ModuleName());
}

void SetModuleInstance(void*) {}

bool IsReadable(const std::wstring& path) {
    return path.find(L'\0') == std::wstring::npos && ::access(NarrowToUtf8(path).c_str(), R_OK) == 0;
}

} // namespace os
