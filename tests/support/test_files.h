/// Where the tests find and put files.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace test {

using Bytes = std::vector<std::uint8_t>;

/// The checkout, the build folder.
std::filesystem::path SourceFolder();
std::filesystem::path BinaryFolder();

/// The conformance streams: the folder named by TRN_TEST_VECTORS, else ../shared/vectors beside the checkout.
/// Nothing when neither exists; the caller then skips by name, loudly.
std::optional<std::filesystem::path> VectorsFolder();

Bytes ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

/// A fresh, empty folder that is deleted with everything in it at the end of its life.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }

    /// Writes a file there and gives its full path.
    std::filesystem::path Add(const std::filesystem::path& name, std::span<const std::uint8_t> bytes) const;

private:
    std::filesystem::path path_;
};

/// A path as the module takes it.
std::wstring Wide(const std::filesystem::path& path);

} // namespace test
