#include "os/log_output.h"

#include "os/paths.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace os {

std::wstring EnvironmentVariable(const wchar_t* name) {
    const char* value = std::getenv(NarrowToUtf8(name).c_str());
    return value != nullptr ? WidenUtf8(value) : std::wstring();
}

std::string LocalTime() {
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    std::tm fields = {};
    ::localtime_r(&now.tv_sec, &fields);
    std::array<char, 64> seconds = {};
    std::strftime(seconds.data(), seconds.size(), "%Y-%m-%d %H:%M:%S", &fields);
    std::array<char, 8> fraction = {};
    std::snprintf(fraction.data(), fraction.size(), ".%03d",
                  static_cast<int>(now.tv_nsec / 1'000'000 % 1000));
    return std::string(seconds.data()) + fraction.data();
}

bool AppendToFile(const std::wstring& path, std::string_view bytes) {
    constexpr mode_t kMode = 0666; // less what the user's mask takes away
    const int descriptor = ::open(NarrowToUtf8(path).c_str(),
                                  O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, kMode);
    if (descriptor < 0)
        return false;
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    ::close(descriptor);
    return written == static_cast<ssize_t>(bytes.size());
}

} // namespace os
