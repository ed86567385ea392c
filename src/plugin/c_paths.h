/// Paths as the plain C functions take them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace trnmpa {

/// The system's form of a path, up to its terminating zero: nothing when it is empty, has more than 32767
/// units or is no valid text. The argument must not be null.
std::optional<std::wstring> PathFrom(const char* utf8);
std::optional<std::wstring> PathFrom(const std::uint16_t* utf16);

} // namespace trnmpa
