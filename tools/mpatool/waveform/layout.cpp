#include "mpatool/waveform/layout.h"

#include <algorithm>

namespace mpatool {

namespace {

// In pixels of scale 1.
constexpr std::int32_t kTitleHeight = 30;
constexpr std::int32_t kAxisHeight = 28;
constexpr std::int32_t kLabelWidth = 88;
constexpr std::int32_t kRightMargin = 16;
constexpr std::int32_t kMargin = 4;
constexpr std::int32_t kGap = 8;
constexpr std::int32_t kSmallGap = 2;
constexpr std::int32_t kLeastForTitle = 140;
constexpr std::int32_t kLeastForAxis = 90;
constexpr std::int32_t kLeastForLabels = 320;
constexpr std::int32_t kLargestScale = 4;

/// Shares of the height.
constexpr std::int32_t kChannelShare = 4;
constexpr std::int32_t kLaneShare = 2;

std::int32_t ScaleFor(std::int32_t width, std::int32_t height) {
    return std::clamp(std::min(width / kUsualWidth, height / kUsualHeight), 1, kLargestScale);
}

/// Hands out boxes from top to bottom.
class Stack {
public:
    Stack(const Box& area, std::int32_t gap, std::int32_t shares, std::int32_t boxes)
        : area_(area), gap_(gap), shares_(shares), free_(area.height - gap * (boxes - 1)) {}

    Box Next(std::int32_t share) {
        const std::int32_t begin = free_ * used_ / shares_;
        used_ += share;
        const std::int32_t end = free_ * used_ / shares_;
        const Box box = {area_.left, area_.top + begin + gap_ * count_, area_.width, end - begin};
        ++count_;
        return box;
    }

private:
    Box area_;
    std::int32_t gap_;
    std::int32_t shares_;
    std::int32_t free_;
    std::int32_t used_ = 0;
    std::int32_t count_ = 0;
};

} // namespace

std::int32_t Layout::Bottom() const {
    return (reservoir ? *reservoir : bitRate ? *bitRate : channels.back()).Bottom();
}

Layout LayOut(std::int32_t width, std::int32_t height, const Contents& contents) {
    Layout layout;
    layout.scale = ScaleFor(width, height);
    const std::int32_t scale = layout.scale;
    layout.hasTitle = height >= kLeastForTitle;
    layout.hasAxis = height >= kLeastForAxis;
    layout.hasLabels = width >= kLeastForLabels;
    const std::int32_t left = (layout.hasLabels ? kLabelWidth : kMargin) * scale;
    const std::int32_t right = (layout.hasLabels ? kRightMargin : kMargin) * scale;
    const std::int32_t top = (layout.hasTitle ? kTitleHeight : kMargin) * scale;
    const std::int32_t bottom = (layout.hasAxis ? kAxisHeight : kMargin) * scale;

    const auto channels = static_cast<std::int32_t>(contents.channels);
    const std::int32_t lanes = (contents.bitRate ? 1 : 0) + (contents.frames ? 2 : 0);
    const std::int32_t gap = (layout.hasAxis ? kGap : kSmallGap) * scale;
    Stack stack({left, top, width - left - right, height - top - bottom}, gap,
                channels * kChannelShare + lanes * kLaneShare, channels + lanes);
    for (std::int32_t i = 0; i < channels; ++i)
        layout.channels.push_back(stack.Next(kChannelShare));
    if (contents.bitRate)
        layout.bitRate = stack.Next(kLaneShare);
    if (contents.frames) {
        layout.blocks = stack.Next(kLaneShare);
        layout.reservoir = stack.Next(kLaneShare);
    }
    return layout;
}

} // namespace mpatool
