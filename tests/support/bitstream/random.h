/// Numbers from a seed, the same on every system.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace test::bitstream {

class Random {
public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}

    /// 0 to `count` - 1; 0 when `count` is below 1.
    int Below(int count) {
        return count < 1 ? 0 : static_cast<int>(engine_() % static_cast<std::uint64_t>(count));
    }

    /// `first` to `last`, both included.
    int Between(int first, int last) { return first + Below(last - first + 1); }

    bool Chance(int percent) { return Below(100) < percent; }

    std::uint8_t Byte() { return static_cast<std::uint8_t>(Below(256)); }

    template <class T>
    const T& Pick(const std::vector<T>& choices) {
        return choices.at(static_cast<std::size_t>(Below(static_cast<int>(choices.size()))));
    }

private:
    std::mt19937_64 engine_;
};

} // namespace test::bitstream
