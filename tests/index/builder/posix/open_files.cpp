#include "index/builder/open_files.h"

#include <system_error>

namespace test {

namespace fs = std::filesystem;

bool IsHeldOpen(const fs::path& path) {
    std::error_code gone;
    for (const auto& descriptor : fs::directory_iterator("/proc/self/fd"))
        if (fs::equivalent(descriptor.path(), path, gone))
            return true;
    return false;
}

} // namespace test
