/// A folder of this process's own, for the length of a run.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace os {

class OutputFile;

/// A folder among the system's temporary files that goes, with all that was put there through this object, at
/// the end of the object's life. Only this user may look into it where the system knows such folders. Not
/// thread-safe.
class PrivateFolder {
public:
    PrivateFolder() = default;
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    ~PrivateFolder() { Remove(); }

    /// Makes the folder under a name that begins with `nameStart`; once for each object. False on failure, as
    /// with the next ones, which want it made; ErrorText then says why.
    bool Create(const std::wstring& nameStart);

    /// Its full path, without a separator at the end; empty before Create.
    const std::wstring& Path() const { return path_; }

    /// Lets a library be loaded from this folder under its file's name: a symbolic link where a library that
    /// is loaded through one is taken for standing there, else a copy.
    bool AddLibrary(const std::wstring& library);

    /// Makes a new file of that name, for `file` to write.
    bool AddFile(const std::wstring& name, OutputFile& file);
    /// Writes a small file.
    bool AddFile(const std::wstring& name, std::string_view bytes);

    /// Full path of a name in the folder.
    std::wstring PathOf(const std::wstring& name) const;

    const std::wstring& ErrorText() const { return errorText_; }

private:
    void Remove();
    bool Fail();

    std::wstring path_;
    std::vector<std::wstring> files_;
    std::wstring errorText_;
};

} // namespace os
