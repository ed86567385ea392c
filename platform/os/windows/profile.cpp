#include "os/profile.h"

#include <windows.h>

namespace os {

int ReadProfileInt(const std::wstring& path, const std::wstring& section, const std::wstring& key,
                   int fallback) {
    return static_cast<int>(GetPrivateProfileIntW(section.c_str(), key.c_str(), fallback, path.c_str()));
}

} // namespace os
