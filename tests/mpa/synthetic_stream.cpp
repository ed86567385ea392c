#include "mpa/synthetic_stream.h"

#include <algorithm>

namespace test {

trnmpa::FrameHeaderBytes HeaderOf(const FrameSpec& spec) {
    const int second = 0xE0 | spec.version << 3 | (4 - spec.layer) << 1 | (spec.hasCrc ? 0 : 1);
    const int third = spec.bitRateIndex << 4 | spec.sampleRateIndex << 2 | (spec.isPadded ? 2 : 0);
    return {0xFF, static_cast<std::uint8_t>(second), static_cast<std::uint8_t>(third),
            static_cast<std::uint8_t>(spec.mode << 6)};
}

void AppendFrame(Bytes& stream, const FrameSpec& spec, std::size_t size) {
    const trnmpa::FrameHeaderBytes header = HeaderOf(spec);
    stream.insert(stream.end(), header.begin(), header.end());
    stream.insert(stream.end(), size - header.size(), 0);
}

Bytes Frames(const FrameSpec& spec, std::size_t size, int count) {
    Bytes stream;
    for (int i = 0; i < count; ++i)
        AppendFrame(stream, spec, size);
    return stream;
}

Bytes PaddedFrames(int count, int mode) {
    Bytes stream;
    for (int i = 0; i < count; ++i) {
        const int size = (i + 1) * 20480 / 49 - i * 20480 / 49;
        AppendFrame(stream, {.isPadded = size == 418, .mode = mode}, static_cast<std::size_t>(size));
    }
    return stream;
}

void Append(Bytes& stream, const Bytes& more) {
    stream.insert(stream.end(), more.begin(), more.end());
}

void PutText(Bytes& stream, std::size_t offset, std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i)
        stream.at(offset + i) = static_cast<std::uint8_t>(text[i]);
}

Bytes TagHeader(std::uint8_t s0, std::uint8_t s1, std::uint8_t s2, std::uint8_t s3) {
    return {'I', 'D', '3', 4, 0, 0, s0, s1, s2, s3};
}

std::size_t MemorySource::Read(std::span<std::uint8_t> destination) {
    const std::int64_t rest = std::max<std::int64_t>(std::ssize(bytes_) - position_, 0);
    const std::size_t count = std::min(destination.size(), static_cast<std::size_t>(rest));
    if (count != 0)
        std::copy_n(bytes_.begin() + position_, count, destination.begin());
    position_ += static_cast<std::int64_t>(count);
    bytesRead_ += count;
    return count;
}

bool MemorySource::SetPosition(std::int64_t position) {
    if (position < 0)
        return false;
    position_ = position;
    return true;
}

std::size_t ComputedSource::Read(std::span<std::uint8_t> destination) {
    std::size_t count = 0;
    for (; count < destination.size() && position_ < length_; ++count)
        destination[count] = byteAt_(position_++);
    return count;
}

bool ComputedSource::SetPosition(std::int64_t position) {
    if (position < 0)
        return false;
    position_ = position;
    return true;
}

} // namespace test
