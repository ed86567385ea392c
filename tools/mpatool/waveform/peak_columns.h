/// What the samples of each column of a picture reach.
#pragma once

#include "mpatool/waveform/columns.h"
#include "mpatool/waveform/peak_measure.h"

#include <cstdint>
#include <span>
#include <vector>

namespace mpatool {

/// Peaks, RMS and clipping, by channel and column.
class PeakColumns {
public:
    /// `channels` is 1 or 2.
    PeakColumns(const Columns& columns, std::size_t channels);

    /// Takes the next samples of the columns' range: 16 bits, interleaved, whole sample frames.
    void Add(std::span<const std::uint8_t> pcm);

    std::size_t Channels() const { return channels_; }
    const Extent& At(std::size_t channel, std::size_t column) const {
        return extents_[column * channels_ + channel];
    }

    /// Samples at full scale in all of a channel.
    std::int64_t FullScale(std::size_t channel) const;

private:
    Columns columns_;
    std::size_t channels_;
    std::vector<Extent> extents_; ///< column by column
    std::vector<std::int16_t> values_;
    std::int64_t position_; ///< of the next sample
};

} // namespace mpatool
