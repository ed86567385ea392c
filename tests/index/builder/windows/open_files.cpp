#include "index/builder/open_files.h"

#include <windows.h>

namespace test {

bool IsHeldOpen(const std::filesystem::path& path) {
    // Shared with nobody: fails when somebody has it.
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return true;
    CloseHandle(file);
    return false;
}

} // namespace test
