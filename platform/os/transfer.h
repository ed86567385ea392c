/// Reading and writing that the system may cut into pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace os {

/// Calls `once(done)` until `wanted` bytes have passed; it handles bytes behind the first `done` and gives
/// how many, 0 at the end, below 0 on an error. Gives the bytes that passed; nothing when an error came
/// before the first.
template <typename Once>
std::optional<std::size_t> TransferAll(std::size_t wanted, Once once) {
    std::size_t done = 0;
    while (done < wanted) {
        const std::int64_t bytes = once(done);
        if (bytes < 0 && done == 0)
            return std::nullopt;
        if (bytes <= 0)
            break;
        done += static_cast<std::size_t>(bytes);
    }
    return done;
}

} // namespace os
