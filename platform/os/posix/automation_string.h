/// The automation string where the system has none. Inline, so that a host and the module need nothing of
/// each other but the C library's memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

/// A zero-terminated wide string with its length in bytes in the 32 bits before it. Null is the empty string.
using BSTR = wchar_t*;

namespace os::bstr {

inline constexpr std::size_t kPrefixBytes = sizeof(std::uint32_t);
inline constexpr std::size_t kCharacterBytes = sizeof(wchar_t);

inline char* StartOfMemory(BSTR text) {
    return reinterpret_cast<char*>(text) - kPrefixBytes;
}

} // namespace os::bstr

/// A new string of `length` characters copied from `text` (zeros when `text` is null), to be freed with
/// SysFreeString. Null when memory runs out or the length in bytes does not fit 32 bits.
inline BSTR SysAllocStringLen(const wchar_t* text, unsigned int length) {
    using namespace os::bstr;
    if (length > std::numeric_limits<std::uint32_t>::max() / kCharacterBytes - 1)
        return nullptr;
    const auto bytes = static_cast<std::uint32_t>(length * kCharacterBytes);
    auto* memory = static_cast<char*>(std::calloc(kPrefixBytes + bytes + kCharacterBytes, 1));
    if (memory == nullptr)
        return nullptr;
    std::memcpy(memory, &bytes, kPrefixBytes);
    if (text != nullptr)
        std::memcpy(memory + kPrefixBytes, text, bytes);
    return reinterpret_cast<BSTR>(memory + kPrefixBytes);
}

/// Characters of the string, the terminating zero not counted; 0 for null.
inline unsigned int SysStringLen(BSTR text) {
    using namespace os::bstr;
    if (text == nullptr)
        return 0;
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, StartOfMemory(text), kPrefixBytes);
    return static_cast<unsigned int>(bytes / kCharacterBytes);
}

/// Frees the string; null is allowed.
inline void SysFreeString(BSTR text) {
    if (text != nullptr)
        std::free(os::bstr::StartOfMemory(text));
}
