#include "mpatool/waveform/peak_columns.h"

#include <bit>
#include <cstring>

namespace mpatool {

static_assert(std::endian::native == std::endian::little, "PCM is taken as it lies in memory");

PeakColumns::PeakColumns(const Columns& columns, std::size_t channels)
    : columns_(columns), channels_(channels), extents_(columns.Count() * channels),
      position_(columns.Range().begin) {}

void PeakColumns::Add(std::span<const std::uint8_t> pcm) {
    values_.resize(pcm.size() / sizeof(std::int16_t));
    std::memcpy(values_.data(), pcm.data(), values_.size() * sizeof(std::int16_t));
    std::span<const std::int16_t> rest = values_;
    const auto samples = static_cast<std::int64_t>(values_.size() / channels_);
    ForEachColumn(columns_, {position_, position_ + samples}, [&](std::size_t column, std::int64_t count) {
        const std::size_t values = static_cast<std::size_t>(count) * channels_;
        Measure(rest.first(values), std::span(extents_).subspan(column * channels_, channels_));
        rest = rest.subspan(values);
    });
    position_ += samples;
}

std::int64_t PeakColumns::FullScale(std::size_t channel) const {
    std::int64_t samples = 0;
    for (std::size_t column = 0; column < columns_.Count(); ++column)
        samples += At(channel, column).fullScale;
    return samples;
}

} // namespace mpatool
