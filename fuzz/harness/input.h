/// Takes a fuzzing input apart, from its front on.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace fuzz {

using Bytes = std::vector<std::uint8_t>;
using View = std::span<const std::uint8_t>;

/// Numbers, lists and parts of an input, little-endian; what the input lacks reads as zeros and empty parts.
class Input {
public:
    explicit Input(View bytes) : rest_(bytes) {}

    bool IsEmpty() const { return rest_.empty(); }
    std::size_t Size() const { return rest_.size(); }

    std::uint8_t U8() { return static_cast<std::uint8_t>(Number(1)); }
    std::uint16_t U16() { return static_cast<std::uint16_t>(Number(2)); }
    std::uint32_t U32() { return static_cast<std::uint32_t>(Number(4)); }
    std::int64_t I64() { return static_cast<std::int64_t>(Number(8)); }

    View Take(std::size_t bytes) {
        const View taken = rest_.first(std::min(bytes, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }
    View Rest() { return Take(rest_.size()); }

    /// A part that its length, 16 bits, precedes.
    View Part() { return Take(U16()); }

    template <typename Value, std::size_t count>
    const Value& Choose(const Value (&values)[count]) {
        return values[U8() % count];
    }

private:
    std::uint64_t Number(std::size_t bytes) {
        std::uint64_t number = 0;
        const View taken = Take(bytes);
        for (std::size_t i = 0; i < taken.size(); ++i)
            number |= std::uint64_t{taken[i]} << 8 * i;
        return number;
    }

    View rest_;
};

/// The other way round, for seeds.
class InputWriter {
public:
    InputWriter& U8(std::uint8_t value) { return Number(value, 1); }
    InputWriter& U16(std::uint16_t value) { return Number(value, 2); }
    InputWriter& U32(std::uint32_t value) { return Number(value, 4); }
    InputWriter& I64(std::int64_t value) { return Number(static_cast<std::uint64_t>(value), 8); }
    InputWriter& Append(View bytes) {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        return *this;
    }
    /// At most 65535 bytes.
    InputWriter& Part(View bytes) {
        const View part = bytes.first(std::min<std::size_t>(bytes.size(), 0xFFFF));
        return U16(static_cast<std::uint16_t>(part.size())).Append(part);
    }

    const Bytes& Done() const { return bytes_; }

private:
    InputWriter& Number(std::uint64_t value, std::size_t bytes) {
        for (std::size_t i = 0; i < bytes; ++i)
            bytes_.push_back(static_cast<std::uint8_t>(value >> 8 * i));
        return *this;
    }

    Bytes bytes_;
};

} // namespace fuzz
