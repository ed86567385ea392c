/// Which files this process holds open.
#pragma once

#include <filesystem>

namespace test {

bool IsHeldOpen(const std::filesystem::path& path);

} // namespace test
