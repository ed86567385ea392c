#include "platform/path_samples.h"

#include "os/paths.h"

#include <system_error>

namespace test {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kNameLength = 100;
constexpr int kFolders = 4;

/// The form in which the C++ library takes a full path of any length.
fs::path AnyLength(const fs::path& path) {
    return os::kPathSeparator == L'\\' ? fs::path(L"\\\\?\\" + Wide(path)) : path;
}

} // namespace

std::vector<fs::path> UnicodeNames() {
    return {u8"Ünïcödé 日本語 🎵.mp3",  u8"Пример.mp2", u8"عربي.mp3",
            u8"e\u0301 combining.mp3", u8"𝄞𠮷.mp3",    u8"%41 #1 & 'a'.mp3"};
}

fs::path Plain(const std::wstring& path) {
    const std::string text = os::NarrowToUtf8(path);
    return fs::path(std::u8string(text.begin(), text.end()));
}

LongPathFile::LongPathFile(const Bytes& content) {
    fs::path folder = fs::absolute(scratch_.Path()).make_preferred();
    for (int depth = 0; depth < kFolders; ++depth) {
        folder /= std::string(kNameLength, static_cast<char>('a' + depth));
        fs::create_directory(AnyLength(folder));
        made_.push_back(AnyLength(folder));
    }
    folder_ = Wide(folder);
    made_.push_back(AnyLength(folder / "file.mp3"));
    path_ = Wide(folder / "file.mp3");
    WriteFile(made_.back(), content);
}

LongPathFile::~LongPathFile() {
    // One by one: on Windows the C++ library finds nothing inside a folder with so long a path.
    std::error_code ignored;
    for (auto path = made_.rbegin(); path != made_.rend(); ++path)
        fs::remove(*path, ignored);
}

Bytes NumberedBytes(std::size_t count) {
    Bytes bytes(count);
    std::uint32_t state = 12345;
    for (std::uint8_t& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return bytes;
}

} // namespace test
