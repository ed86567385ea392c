/// What a log asks of the system.
#pragma once

#include <string>
#include <string_view>

namespace os {

/// Value of an environment variable; empty when there is none.
std::wstring EnvironmentVariable(const wchar_t* name);

/// The local time as "2024-01-31 12:34:56.789".
std::string LocalTime();

/// Adds `bytes` at the end of the file `path`, in one write; a missing file is created. False on failure.
bool AppendToFile(const std::wstring& path, std::string_view bytes);

} // namespace os
