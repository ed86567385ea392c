#include "mpatool/waveform/peak_measure.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace mpatool {

namespace {

/// Lane l takes the values l, l + 16, ..., all of one channel; a shape that compilers find vector code for.
constexpr std::size_t kLanes = 16;

struct Lanes {
    std::array<std::int16_t, kLanes> lowest{};
    std::array<std::int16_t, kLanes> highest{};
    std::array<std::uint64_t, kLanes> squares{};
};

/// Squares of that many values fit 64 bits by far.
constexpr std::size_t kValuesAtOnce = 1 << 16;

Lanes MeasureLanes(const std::int16_t* values, std::size_t count) {
    Lanes lanes;
    lanes.lowest.fill(std::numeric_limits<std::int16_t>::max());
    lanes.highest.fill(std::numeric_limits<std::int16_t>::min());
    for (std::size_t i = 0; i < count; i += kLanes) {
        for (std::size_t l = 0; l < kLanes; ++l)
            lanes.lowest[l] = std::min(lanes.lowest[l], values[i + l]);
        for (std::size_t l = 0; l < kLanes; ++l)
            lanes.highest[l] = std::max(lanes.highest[l], values[i + l]);
        for (std::size_t l = 0; l < kLanes; ++l)
            lanes.squares[l] += static_cast<std::uint32_t>(std::int32_t{values[i + l]} * values[i + l]);
    }
    return lanes;
}

void Merge(Extent& extent, std::int16_t lowest, std::int16_t highest, std::uint64_t squares) {
    extent.lowest = std::min(extent.lowest, lowest);
    extent.highest = std::max(extent.highest, highest);
    extent.squares += static_cast<double>(squares);
}

bool IsFullScale(std::int16_t value) {
    return value >= kFullScale || value <= -kFullScale;
}

void MeasurePiece(std::span<const std::int16_t> values, std::span<Extent> channels) {
    const std::size_t inLanes = values.size() / kLanes * kLanes;
    const Lanes lanes = MeasureLanes(values.data(), inLanes);
    bool hasFullScale = false;
    for (std::size_t l = 0; inLanes > 0 && l < kLanes; ++l) {
        Merge(channels[l % channels.size()], lanes.lowest[l], lanes.highest[l], lanes.squares[l]);
        hasFullScale |= IsFullScale(lanes.lowest[l]) || IsFullScale(lanes.highest[l]);
    }
    for (std::size_t i = inLanes; i < values.size(); ++i) {
        const std::int16_t value = values[i];
        Merge(channels[i % channels.size()], value, value,
              static_cast<std::uint32_t>(std::int32_t{value} * value));
        hasFullScale |= IsFullScale(value);
    }
    for (std::size_t i = 0; hasFullScale && i < values.size(); ++i)
        channels[i % channels.size()].fullScale += IsFullScale(values[i]) ? 1 : 0;
}

} // namespace

double Extent::Rms() const {
    return samples == 0 ? 0 : std::sqrt(squares / static_cast<double>(samples));
}

void Measure(std::span<const std::int16_t> values, std::span<Extent> channels) {
    for (Extent& extent : channels)
        extent.samples += static_cast<std::int64_t>(values.size() / channels.size());
    while (!values.empty()) {
        const auto piece = values.first(std::min(values.size(), kValuesAtOnce));
        MeasurePiece(piece, channels);
        values = values.subspan(piece.size());
    }
}

} // namespace mpatool
