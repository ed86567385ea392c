/// What the stream analysis reads from.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace trnmpa {

/// Bytes with a position. Whoever reads through it does not own it.
class HeaderSource {
public:
    /// Copies the next bytes and advances the position by their number, which it gives: less than asked only
    /// at the end of the data or after a fault of the storage.
    virtual std::size_t Read(std::span<std::uint8_t> destination) = 0;

    /// Bytes from the start of the data.
    virtual std::int64_t Position() = 0;

    /// Moves the position; behind the end is allowed, reads then give nothing. False when it cannot be moved.
    virtual bool SetPosition(std::int64_t position) = 0;

protected:
    ~HeaderSource() = default;
};

/// The four bytes at `position`, a header or a text; what the data lack is 0.
inline std::array<std::uint8_t, 4> ReadFourBytes(HeaderSource& source, std::int64_t position) {
    std::array<std::uint8_t, 4> bytes = {};
    if (source.SetPosition(position))
        source.Read(bytes);
    return bytes;
}

} // namespace trnmpa
