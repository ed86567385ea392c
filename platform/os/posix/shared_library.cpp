#include "os/shared_library.h"

#include "os/paths.h"

#include <dlfcn.h>

#include <string_view>
#include <utility>

namespace os {

namespace {

/// The loader's last message, without the name of the library that stands before it.
std::wstring LastLoaderError(const std::string& library) {
    const char* message = dlerror();
    std::string_view text = message != nullptr ? message : "unknown error";
    const std::string prefix = library + ": ";
    if (text.starts_with(prefix))
        text.remove_prefix(prefix.size());
    return WidenUtf8(text);
}

} // namespace

bool SharedLibrary::Load(const std::wstring& path) {
    // dlopen looks for a name without a slash in the system's search path.
    return LoadCompanion(path.find(L'/') == std::wstring::npos ? L"./" + path : path);
}

bool SharedLibrary::LoadCompanion(const std::wstring& fileName) {
    Unload();
    const std::string place = NarrowToUtf8(fileName);
    handle_ = dlopen(place.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr)
        errorText_ = LastLoaderError(place);
    return handle_ != nullptr;
}

void SharedLibrary::Unload() {
    if (handle_ != nullptr)
        dlclose(std::exchange(handle_, nullptr));
}

void* SharedLibrary::Symbol(const char* name) {
    if (handle_ == nullptr) {
        errorText_ = L"no library is loaded";
        return nullptr;
    }
    void* address = dlsym(handle_, name);
    if (address == nullptr)
        errorText_ = LastLoaderError({});
    return address;
}

std::wstring SharedLibraryFileName(const std::wstring& name) {
    return L"lib" + name + L".so";
}

} // namespace os
