/// The columns of a picture over the samples that they stand for.
#pragma once

#include "mpatool/pcm/pcm_conversion.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace mpatool {

/// As many columns as a picture is wide, or as there are samples when these are fewer. Column c stands for
/// the samples from Begin(c) up to Begin(c + 1), at least one.
class Columns {
public:
    /// `range` holds at least one sample; `width`, in pixels, is greater than 0.
    Columns(const SampleRange& range, std::int32_t width);

    std::size_t Count() const { return count_; }
    const SampleRange& Range() const { return range_; }
    bool IsOneSampleEach() const { return range_.Samples() == static_cast<std::int64_t>(count_); }

    /// First sample of a column; that of Count() is the end.
    std::int64_t Begin(std::size_t column) const;

    /// The column of a sample of the range.
    std::size_t At(std::int64_t sample) const;

    /// Left edge of a column in pixels; that of Count() is the width.
    std::int32_t Left(std::size_t column) const;

private:
    SampleRange range_;
    std::int32_t width_;
    std::size_t count_;
};

/// Calls `add(column, samples)` for each column that the samples from `begin` up to `end` touch, with their
/// number in it.
template <typename Add>
void ForEachColumn(const Columns& columns, SampleRange samples, Add add) {
    samples.begin = std::max(samples.begin, columns.Range().begin);
    samples.end = std::min(samples.end, columns.Range().end);
    if (samples.begin >= samples.end)
        return;
    for (std::size_t column = columns.At(samples.begin); samples.begin < samples.end; ++column) {
        const std::int64_t end = std::min(samples.end, columns.Begin(column + 1));
        add(column, end - samples.begin);
        samples.begin = end;
    }
}

} // namespace mpatool
