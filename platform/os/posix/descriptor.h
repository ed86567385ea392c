/// What the file classes of this system share.
#pragma once

#include <cerrno>
#include <string>

namespace os {

/// Repeats a system call that a signal interrupted.
template <typename Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// A descriptor for the regular file `path`, opened with the `flags` of open(2) and not inherited by other
/// programs; -1, with a reason in errno, also for folders, pipes, devices and paths with a zero in them.
/// Never waits for the other end of a pipe.
int OpenRegularFile(const std::wstring& path, int flags);

} // namespace os
