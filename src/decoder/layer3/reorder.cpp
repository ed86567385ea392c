#include "decoder/layer3/reorder.h"

#include <algorithm>

namespace trnmpa {

namespace {

/// One band: `width` lines of each window, one window after the other, become triples.
void InterleaveBand(std::span<float> band, std::size_t width) {
    float interleaved[kGranuleLines];
    for (std::size_t i = 0; i < width; ++i)
        for (std::size_t window = 0; window < 3; ++window)
            interleaved[3 * i + window] = band[window * width + i];
    std::copy_n(interleaved, 3 * width, band.begin());
}

} // namespace

int ReorderShortBlocks(const BandLayout& layout, int nonZeroCount, Spectrum spectrum) {
    int reordered = nonZeroCount;
    for (const BandSegment& segment : layout.Segments()) {
        if (segment.start >= nonZeroCount)
            break;
        if (!segment.isShort || segment.window != 0)
            continue;
        InterleaveBand(spectrum.subspan(segment.start, std::size_t{3} * segment.width), segment.width);
        reordered = std::max(reordered, segment.start + 3 * segment.width);
    }
    return reordered;
}

} // namespace trnmpa
