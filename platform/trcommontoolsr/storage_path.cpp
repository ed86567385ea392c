#include "trcommontoolsr/storage_path.h"

#include "os/paths.h"

#include <mutex>

namespace storage {

namespace {

constexpr std::wstring_view kPrefix = L"dqs:\\";
constexpr std::wstring_view kSeparators = L"\\/";

struct Folder {
    std::mutex mutex;
    std::wstring path;
};

Folder& TheFolder() {
    static Folder folder;
    return folder;
}

std::wstring CurrentFolder() {
    Folder& folder = TheFolder();
    const std::lock_guard lock(folder.mutex);
    return folder.path;
}

/// Windows drops blanks and dots at the end of a name, so that ".. ." would be ".." there; a colon begins a
/// stream or follows a drive.
bool IsSafe(std::wstring_view name) {
    return name.find_first_not_of(L". ") != std::wstring_view::npos &&
           name.find(L':') == std::wstring_view::npos;
}

/// Cuts the first name off `path`.
std::wstring_view TakeName(std::wstring_view& path) {
    const std::size_t end = path.find_first_of(kSeparators);
    const std::wstring_view name = path.substr(0, end);
    path.remove_prefix(end == std::wstring_view::npos ? path.size() : end + 1);
    return name;
}

} // namespace

void SetFolder(const std::wstring& folder) {
    std::wstring path = folder;
    Folder& current = TheFolder();
    const std::lock_guard lock(current.mutex);
    current.path.swap(path);
}

std::optional<std::wstring> Resolve(std::wstring_view path) {
    const std::size_t start = path.find(kPrefix);
    if (start == std::wstring_view::npos)
        return std::wstring(path);
    std::wstring place = CurrentFolder();
    if (place.empty())
        return std::nullopt;
    for (std::wstring_view rest = path.substr(start + kPrefix.size()); !rest.empty();) {
        const std::wstring_view name = TakeName(rest);
        if (name.empty())
            continue;
        if (!IsSafe(name))
            return std::nullopt;
        place += os::kPathSeparator;
        place += name;
    }
    return place;
}

} // namespace storage
