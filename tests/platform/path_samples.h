/// Paths that are hard on file code.
#pragma once

#include "support/test_files.h"

#include <filesystem>
#include <string>
#include <vector>

namespace test {

/// File names from several scripts, in and beyond the basic plane.
std::vector<std::filesystem::path> UnicodeNames();

/// The C++ library's form of a path, whatever the locale; the opposite of Wide.
std::filesystem::path Plain(const std::wstring& path);

/// A file whose full path has more than 400 characters; it and its folders are deleted at the end.
class LongPathFile {
public:
    explicit LongPathFile(const Bytes& content);
    ~LongPathFile();
    LongPathFile(const LongPathFile&) = delete;
    LongPathFile& operator=(const LongPathFile&) = delete;

    /// As a host passes it, without any prefix.
    const std::wstring& Path() const { return path_; }
    /// The folder that holds it.
    const std::wstring& Folder() const { return folder_; }

private:
    ScratchFolder scratch_;
    std::vector<std::filesystem::path> made_;
    std::wstring folder_;
    std::wstring path_;
};

/// `count` bytes, different from their neighbours, the same at every call.
Bytes NumberedBytes(std::size_t count);

} // namespace test
