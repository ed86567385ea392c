#include "os/private_folder.h"

#include "os/error_text.h"
#include "os/output_file.h"
#include "os/paths.h"

#include <cstdlib>
#include <unistd.h>

namespace os {

namespace {

std::string TemporaryFiles() {
    const char* named = std::getenv("TMPDIR");
    return named != nullptr && *named == '/' ? named : "/tmp";
}

} // namespace

bool PrivateFolder::Fail() {
    errorText_ = LastErrorText();
    return false;
}

bool PrivateFolder::Create(const std::wstring& nameStart) {
    std::string name = TemporaryFiles() + "/" + NarrowToUtf8(nameStart) + "XXXXXX";
    if (::mkdtemp(name.data()) == nullptr)
        return Fail();
    path_ = WidenUtf8(name);
    return true;
}

/// The loader keeps the name that it was given, so the link's folder is the library's. A copy would be
/// refused where nothing may be run from temporary files.
bool PrivateFolder::AddLibrary(const std::wstring& library) {
    if (path_.empty())
        return false;
    const std::wstring full = ResolveLinks(library);
    const std::wstring place = PathOf(library.substr(library.rfind(kPathSeparator) + 1));
    if (::symlink(NarrowToUtf8(full).c_str(), NarrowToUtf8(place).c_str()) != 0)
        return Fail();
    files_.push_back(place);
    return true;
}

void PrivateFolder::Remove() {
    for (const std::wstring& file : files_)
        DeleteFileAt(file);
    files_.clear();
    if (!path_.empty())
        ::rmdir(NarrowToUtf8(path_).c_str());
    path_.clear();
}

} // namespace os
