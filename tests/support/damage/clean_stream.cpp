#include "support/damage/clean_stream.h"

#include <algorithm>
#include <stdexcept>

namespace test {

CleanStream CleanStreamOf(const bitstream::Stream& stream) {
    CleanStream clean;
    clean.bytes = stream.bytes;
    for (const bitstream::FrameRecord& frame : stream.frames)
        clean.frames.push_back({frame.offset, static_cast<std::size_t>(frame.length), frame.header});
    return clean;
}

CleanStream FirstFramesOf(const Bytes& file, std::size_t mostFrames) {
    CleanStream clean;
    std::optional<model::Header> previous;
    std::size_t offset = 0;
    while (clean.frames.size() < mostFrames && offset + 4 <= file.size()) {
        model::HeaderBytes bytes = {};
        std::copy_n(file.begin() + static_cast<std::ptrdiff_t>(offset), bytes.size(), bytes.begin());
        const auto header = model::ParseHeader(bytes, previous);
        if (!header)
            throw std::invalid_argument("no frame at byte " + std::to_string(offset));
        const auto length = static_cast<std::size_t>(header->frameBytes);
        if (length > file.size() - offset)
            break;
        clean.frames.push_back({offset, length, *header});
        previous = header;
        offset += length;
    }
    if (clean.frames.empty())
        throw std::invalid_argument("no whole frame at the start");
    clean.bytes.assign(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(offset));
    return clean;
}

} // namespace test
