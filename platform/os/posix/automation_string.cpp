#include "os/automation_string.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

constexpr std::size_t kPrefixBytes = sizeof(std::uint32_t);
constexpr std::size_t kCharacterBytes = sizeof(wchar_t);

char* StartOfMemory(BSTR text) {
    return reinterpret_cast<char*>(text) - kPrefixBytes;
}

} // namespace

BSTR SysAllocStringLen(const wchar_t* text, unsigned int length) {
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

unsigned int SysStringLen(BSTR text) {
    if (text == nullptr)
        return 0;
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, StartOfMemory(text), kPrefixBytes);
    return static_cast<unsigned int>(bytes / kCharacterBytes);
}

void SysFreeString(BSTR text) {
    if (text != nullptr)
        std::free(StartOfMemory(text));
}
