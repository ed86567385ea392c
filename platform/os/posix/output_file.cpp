#include "os/output_file.h"

#include "os/console.h"
#include "os/error_text.h"
#include "os/paths.h"
#include "os/posix/descriptor.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace os {

PathKind KindOfPath(const std::wstring& path) {
    const std::string name = NarrowToUtf8(path);
    struct stat status = {};
    if (stat(name.c_str(), &status) != 0)
        return lstat(name.c_str(), &status) == 0 ? PathKind::kFile : PathKind::kMissing;
    if (S_ISREG(status.st_mode))
        return PathKind::kFile;
    return S_ISDIR(status.st_mode) ? PathKind::kFolder : PathKind::kDevice;
}

bool IsSameFile(const std::wstring& first, const std::wstring& second) {
    struct stat one = {};
    struct stat two = {};
    return stat(NarrowToUtf8(first).c_str(), &one) == 0 && stat(NarrowToUtf8(second).c_str(), &two) == 0 &&
           one.st_dev == two.st_dev && one.st_ino == two.st_ino;
}

std::wstring ResolveLinks(const std::wstring& path) {
    const std::unique_ptr<char, void (*)(void*)> resolved(realpath(NarrowToUtf8(path).c_str(), nullptr),
                                                          std::free);
    return resolved != nullptr ? WidenUtf8(resolved.get()) : path;
}

std::wstring TemporaryNameBeside(const std::wstring& path) {
    static std::atomic<unsigned> counter = 0;
    const std::size_t slash = path.rfind(L'/');
    const std::wstring folder = slash == std::wstring::npos ? L"" : path.substr(0, slash + 1);
    return folder + L".unfinished-" + std::to_wstring(getpid()) + L"-" + std::to_wstring(counter++);
}

std::wstring MoveFileTo(const std::wstring& from, const std::wstring& to, bool replace) {
    const std::string source = NarrowToUtf8(from);
    const std::string target = NarrowToUtf8(to);
    if (!replace) {
        if (link(source.c_str(), target.c_str()) == 0) {
            unlink(source.c_str());
            return {};
        }
        // Anything but a taken name: a file system without hard links.
        if (errno == EEXIST || KindOfPath(to) != PathKind::kMissing) {
            errno = EEXIST;
            return LastErrorText();
        }
    }
    return std::rename(source.c_str(), target.c_str()) == 0 ? L"" : LastErrorText();
}

bool DeleteFileAt(const std::wstring& path) {
    return unlink(NarrowToUtf8(path).c_str()) == 0;
}

bool OutputFile::Create(const std::wstring& path) {
    return Keep(open(NarrowToUtf8(path).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666), true);
}

bool OutputFile::CreateAlways(const std::wstring& path) {
    return Keep(OpenRegularFile(path, O_WRONLY | O_CREAT | O_TRUNC), true);
}

bool OutputFile::OpenExisting(const std::wstring& path) {
    return Keep(open(NarrowToUtf8(path).c_str(), O_WRONLY | O_CLOEXEC), true);
}

bool OutputFile::OpenStandardOutput() {
    return Keep(STDOUT_FILENO, false);
}

bool OutputFile::SetPosition(std::int64_t position) {
    return position >= 0 && lseek(static_cast<int>(handle_), position, SEEK_SET) == position;
}

WriteResult OutputFile::Write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(static_cast<int>(handle_), bytes.data(), bytes.size());
        if (written == 0) {
            // Neither an error nor any progress: trying again could go on for ever.
            errno = EIO;
            errorText_ = LastErrorText();
            return WriteResult::kFailed;
        }
        if (written > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(written));
        } else if (errno == EINTR) {
            if (InterruptRequested())
                return WriteResult::kInterrupted;
        } else {
            const bool closed = errno == EPIPE;
            errorText_ = LastErrorText();
            return closed ? WriteResult::kClosedPipe : WriteResult::kFailed;
        }
    }
    return WriteResult::kDone;
}

bool OutputFile::Close() {
    const std::intptr_t handle = std::exchange(handle_, kNoHandle);
    if (handle == kNoHandle || !owned_)
        return true;
    if (close(static_cast<int>(handle)) == 0)
        return true;
    errorText_ = LastErrorText();
    return false;
}

bool OutputFile::Keep(std::intptr_t handle, bool owned) {
    if (handle == kNoHandle) {
        errorText_ = LastErrorText();
        return false;
    }
    Close();
    handle_ = handle;
    owned_ = owned;
    return true;
}

} // namespace os
