#include "support/test_files.h"

#include "os/paths.h"

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <random>
#include <stdexcept>
#include <system_error>

namespace test {

namespace fs = std::filesystem;

namespace {

fs::path FolderFromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0')
        throw std::runtime_error(std::string(name) + " is not set; run the tests through ctest");
    return fs::path(value);
}

} // namespace

fs::path SourceFolder() {
    return FolderFromEnvironment("TRN_SOURCE_DIR");
}

fs::path BinaryFolder() {
    return FolderFromEnvironment("TRN_BINARY_DIR");
}

std::optional<fs::path> VectorsFolder() {
    const char* named = std::getenv("TRN_TEST_VECTORS");
    const fs::path folder =
        named != nullptr && *named != '\0' ? fs::path(named) : SourceFolder() / ".." / "shared" / "vectors";
    std::error_code error;
    if (!fs::is_directory(folder, error))
        return std::nullopt;
    return folder;
}

Bytes ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path.string());
    return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void WriteFile(const fs::path& path, std::span<const std::uint8_t> bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file)
        throw std::runtime_error("cannot write " + path.string());
}

ScratchFolder::ScratchFolder() {
    static std::atomic<unsigned> counter = 0;
    const fs::path base = BinaryFolder() / "scratch";
    fs::create_directories(base);
    do {
        path_ = base / (std::to_string(std::random_device{}()) + "-" + std::to_string(counter++));
    } while (!fs::create_directory(path_));
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

fs::path ScratchFolder::Add(const fs::path& name, std::span<const std::uint8_t> bytes) const {
    const fs::path path = path_ / name;
    WriteFile(path, bytes);
    return path;
}

std::wstring Wide(const fs::path& path) {
    const auto text = path.u8string();
    return os::WidenUtf8(std::string_view(reinterpret_cast<const char*>(text.data()), text.size()));
}

} // namespace test
