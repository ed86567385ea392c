#include "mpatool/waveform/columns.h"

namespace mpatool {

Columns::Columns(const SampleRange& range, std::int32_t width)
    : range_(range), width_(width),
      count_(static_cast<std::size_t>(std::min<std::int64_t>(width, range.Samples()))) {}

std::int64_t Columns::Begin(std::size_t column) const {
    const auto count = static_cast<std::int64_t>(count_);
    const auto number = static_cast<std::int64_t>(column);
    // Of samples * number / count, without the product, which need not fit.
    return range_.begin + range_.Samples() / count * number + range_.Samples() % count * number / count;
}

std::size_t Columns::At(std::int64_t sample) const {
    const double share = static_cast<double>(sample - range_.begin) / static_cast<double>(range_.Samples());
    auto column = std::min(static_cast<std::size_t>(share * static_cast<double>(count_)), count_ - 1);
    while (Begin(column) > sample)
        --column;
    while (Begin(column + 1) <= sample)
        ++column;
    return column;
}

std::int32_t Columns::Left(std::size_t column) const {
    return static_cast<std::int32_t>(static_cast<std::int64_t>(column) * width_ /
                                     static_cast<std::int64_t>(count_));
}

} // namespace mpatool
