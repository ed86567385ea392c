/// A digest of PCM for golden values.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace test {

/// 64-bit FNV-1a of the bytes, as 16 hexadecimal digits.
std::string Digest(std::span<const std::uint8_t> bytes);

/// The same of 16-bit values, taken as little-endian bytes.
std::string Digest(std::span<const std::int16_t> values);

} // namespace test
