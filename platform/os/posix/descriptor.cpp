#include "os/posix/descriptor.h"

#include "os/paths.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace os {

int OpenRegularFile(const std::wstring& path, int flags) {
    if (path.find(L'\0') != std::wstring::npos) {
        errno = EINVAL;
        return -1;
    }
    // Non-blocking: opening a pipe without another end would wait for ever. Regular files take no notice.
    const int allFlags = flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    const std::string name = NarrowToUtf8(path);
    const int descriptor = Uninterrupted([&] { return ::open(name.c_str(), allFlags, 0666); });
    if (descriptor < 0)
        return -1;
    struct stat status = {};
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode))
        return descriptor;
    ::close(descriptor);
    errno = EINVAL;
    return -1;
}

} // namespace os
