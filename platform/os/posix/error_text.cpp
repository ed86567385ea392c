#include "os/error_text.h"

#include "os/paths.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace os {

std::wstring LastErrorText() {
    return WidenUtf8(std::generic_category().message(errno));
}

std::wstring WhyUnreadable(const std::wstring& path) {
    const int file = open(NarrowToUtf8(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0)
        return LastErrorText();
    struct stat status = {};
    std::wstring reason;
    if (fstat(file, &status) != 0)
        reason = LastErrorText();
    else if (S_ISDIR(status.st_mode))
        reason = L"Is a directory";
    else if (!S_ISREG(status.st_mode))
        reason = L"Not a regular file";
    close(file);
    return reason;
}

} // namespace os
