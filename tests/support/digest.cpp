#include "support/digest.h"

#include <cstdio>

namespace test {

namespace {

constexpr std::uint64_t kOffsetBasis = 14695981039346656037u;
constexpr std::uint64_t kPrime = 1099511628211u;

std::string Hexadecimal(std::uint64_t value) {
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(value));
    return text;
}

} // namespace

std::string Digest(std::span<const std::uint8_t> bytes) {
    std::uint64_t hash = kOffsetBasis;
    for (const std::uint8_t byte : bytes)
        hash = (hash ^ byte) * kPrime;
    return Hexadecimal(hash);
}

std::string Digest(std::span<const std::int16_t> values) {
    std::uint64_t hash = kOffsetBasis;
    for (const std::int16_t value : values) {
        const auto bits = static_cast<std::uint16_t>(value);
        hash = (hash ^ (bits & 0xFFu)) * kPrime;
        hash = (hash ^ (bits >> 8)) * kPrime;
    }
    return Hexadecimal(hash);
}

} // namespace test
