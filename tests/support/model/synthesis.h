/// The polyphase synthesis filter bank (ISO/IEC 11172-3 clause 2.4.3.2.2, figure A.2) and the 16-bit output.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace test::model {

/// Nearest integer, halves to the even one, clipped to 16 bits however large the sum is.
std::int16_t ToPcm(double sum);

/// Both channels' filter banks, which step together: a channel that is left out keeps its old vectors at
/// their places among the last 16.
class Synthesis {
public:
    void Reset();

    /// Before the first channel of each time slot.
    void StartSlot();

    /// 32 subband samples in 16-bit units give 32 sums.
    std::array<double, 32> Channel(std::size_t channel, std::span<const double, 32> samples);

private:
    using Vector = std::array<double, 64>;
    std::array<std::array<Vector, 16>, 2> vectors_{}; ///< V in slots of 64, a ring
    std::size_t newest_ = 0;
};

} // namespace test::model
