/// Dynamic libraries loaded at run time.
#pragma once

#include <string>
#include <utility>

namespace os {

/// Owns one loaded library; it is unloaded at the end of the object's life, so nothing obtained from it may
/// be used after that. Not thread-safe.
class SharedLibrary {
public:
    SharedLibrary() = default;
    SharedLibrary(SharedLibrary&& other) noexcept
        : handle_(std::exchange(other.handle_, nullptr)), errorText_(std::move(other.errorText_)) {}
    SharedLibrary& operator=(SharedLibrary&& other) noexcept {
        std::swap(handle_, other.handle_);
        std::swap(errorText_, other.errorText_);
        return *this;
    }
    ~SharedLibrary() { Unload(); }

    /// Loads the library at `path`, a relative one taken from the current folder, never from the system's
    /// search path; an earlier library is unloaded. All symbols are bound at once, so a missing one fails
    /// here. False on failure; ErrorText then says why.
    bool Load(const std::wstring& path);

    /// As Load, for a library that comes with this module and is known by its file name: on Windows it stands
    /// in the module's folder, elsewhere the system's loader knows it.
    bool LoadCompanion(const std::wstring& fileName);

    void Unload();
    bool IsLoaded() const { return handle_ != nullptr; }

    /// The address of an exported name; null when the library does not export it or none is loaded. ErrorText
    /// then says why.
    void* Symbol(const char* name);

    /// The address of an exported function. `Function` is a function pointer type.
    template <typename Function>
    Function FunctionNamed(const char* name) {
        return reinterpret_cast<Function>(Symbol(name));
    }

    /// The system's reason for the last failure of Load or Symbol.
    const std::wstring& ErrorText() const { return errorText_; }

private:
    void* handle_ = nullptr;
    std::wstring errorText_;
};

/// The file name of a library on this system: "libNAME.so" or "NAME.dll".
std::wstring SharedLibraryFileName(const std::wstring& name);

} // namespace os
