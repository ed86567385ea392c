/// The bit reservoir: a ring of 2048 bytes that is never checked for holding what a frame asks for.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace test::model {

class Reservoir {
public:
    void Append(std::span<const std::uint8_t> bytes) {
        for (const std::uint8_t byte : bytes) {
            ring_[write_] = byte;
            write_ = (write_ + 1) % ring_.size();
        }
    }

    /// The last `count` bytes, also those that were never written (zeros) or are left from long ago.
    std::vector<std::uint8_t> Last(std::size_t count) const {
        std::vector<std::uint8_t> bytes;
        for (std::size_t back = count; back > 0; --back)
            bytes.push_back(ring_[(write_ + ring_.size() - back) % ring_.size()]);
        return bytes;
    }

private:
    std::array<std::uint8_t, 2048> ring_{};
    std::size_t write_ = 0;
};

} // namespace test::model
