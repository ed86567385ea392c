#include "os/shared_library.h"

#include "os/error_text.h"
#include "os/paths.h"
#include "os/windows/extended_path.h"

#include <filesystem>
#include <system_error>
#include <utility>
#include <windows.h>

namespace os {

bool SharedLibrary::Load(const std::wstring& path) {
    Unload();
    // The flag makes the library's own folder the first place for the libraries that it needs; it wants a
    // full path.
    std::error_code error;
    const std::wstring full = std::filesystem::absolute(path, error).wstring();
    const std::wstring name = ExtendedPath(full);
    handle_ = LoadLibraryExW(name.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (handle_ == nullptr)
        errorText_ = LastErrorText();
    return handle_ != nullptr;
}

bool SharedLibrary::LoadCompanion(const std::wstring& fileName) {
    return Load((std::filesystem::path(ModulePath()).parent_path() / fileName).wstring());
}

void SharedLibrary::Unload() {
    if (handle_ != nullptr)
        FreeLibrary(static_cast<HMODULE>(std::exchange(handle_, nullptr)));
}

void* SharedLibrary::Symbol(const char* name) {
    if (handle_ == nullptr) {
        errorText_ = L"no library is loaded";
        return nullptr;
    }
    const FARPROC address = GetProcAddress(static_cast<HMODULE>(handle_), name);
    if (address == nullptr)
        errorText_ = LastErrorText();
    return reinterpret_cast<void*>(address);
}

std::wstring SharedLibraryFileName(const std::wstring& name) {
    return name + L".dll";
}

} // namespace os
