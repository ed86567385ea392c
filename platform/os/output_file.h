/// Files, pipes and standard output to write to.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <utility>

namespace os {

/// What a path names.
enum class PathKind {
    kMissing,
    kFile, ///< a regular file, or a link that leads nowhere
    kFolder,
    kDevice, ///< a device, a pipe, a socket: nothing that could be replaced by a file of that name
};
PathKind KindOfPath(const std::wstring& path);

/// True when both paths name one existing file.
bool IsSameFile(const std::wstring& first, const std::wstring& second);

/// The path behind symbolic links; `path` itself when there are none or the system does not tell.
std::wstring ResolveLinks(const std::wstring& path);

/// A file name for the half-made form of `path`: in the same folder, different for each process and call.
std::wstring TemporaryNameBeside(const std::wstring& path);

/// Makes an empty file under such a name, which nothing had before; empty when it cannot.
std::wstring ReserveNameBeside(const std::wstring& path);

/// Gives the file `from` the name `to`, in one step where the system can. With `replace`, an existing file of
/// that name gives way; without, it makes the operation fail. Gives the system's reason for a failure, empty
/// when done.
std::wstring MoveFileTo(const std::wstring& from, const std::wstring& to, bool replace);
bool DeleteFileAt(const std::wstring& path);

enum class WriteResult {
    kDone,
    kClosedPipe,  ///< nobody reads the pipe any more
    kInterrupted, ///< os::InterruptRequested came in while writing
    kFailed,      ///< OutputFile::ErrorText says why
};

/// Something open for writing, unbuffered. Not thread-safe.
class OutputFile {
public:
    OutputFile() = default;
    OutputFile(OutputFile&& other) noexcept
        : handle_(std::exchange(other.handle_, kNoHandle)), owned_(other.owned_),
          errorText_(std::move(other.errorText_)) {}
    OutputFile& operator=(OutputFile&& other) noexcept {
        std::swap(handle_, other.handle_);
        std::swap(owned_, other.owned_);
        std::swap(errorText_, other.errorText_);
        return *this;
    }
    ~OutputFile() { Close(); }

    /// Makes a new file; fails when the name is taken.
    bool Create(const std::wstring& path);
    /// Makes an empty file or empties the regular file of that name, shared with readers and other writers.
    /// Refuses what is no regular file, and paths with a zero in them.
    bool CreateAlways(const std::wstring& path);
    /// Opens what is there, without cutting it: a device or a pipe.
    bool OpenExisting(const std::wstring& path);
    /// Takes this process's standard output, which Close leaves open.
    bool OpenStandardOutput();

    /// Where the next write goes, from the start of the file. False when the file has no positions.
    bool SetPosition(std::int64_t position);

    /// Writes all bytes.
    WriteResult Write(std::span<const std::uint8_t> bytes);

    /// False when the system reports only now that something was not written.
    bool Close();

    /// The system's reason for the last failure.
    const std::wstring& ErrorText() const { return errorText_; }

private:
    static constexpr std::intptr_t kNoHandle = -1;

    bool Keep(std::intptr_t handle, bool owned);

    std::intptr_t handle_ = kNoHandle;
    bool owned_ = false;
    std::wstring errorText_;
};

} // namespace os
