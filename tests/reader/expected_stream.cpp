#include "reader/expected_stream.h"

#include "decoder/stream_decode.h"

#include <algorithm>
#include <atomic>
#include <string>

namespace test {

namespace {

using bitstream::FrameRecord;
using bitstream::Stream;

void Append(std::vector<std::uint8_t>& bytes, std::uint32_t value, int width) {
    for (int i = 0; i < width; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

int SamplesPerFrame(const FrameRecord& frame) {
    return frame.header.layer == 3 && frame.header.lsf ? 576 : 1152;
}

std::vector<std::uint8_t> IndexOf(const Stream& stream) {
    const FrameRecord& first = stream.frames.front();
    std::vector<std::uint8_t> index;
    Append(index, static_cast<std::uint32_t>(stream.frames.size() - 1), 4);
    Append(index, static_cast<std::uint32_t>(stream.bytes.size()), 4);
    Append(index, static_cast<std::uint32_t>(first.header.layer), 1);
    Append(index, first.header.lsf ? 2 : 1, 1);
    Append(index, static_cast<std::uint32_t>(first.header.channels), 2);
    Append(index, static_cast<std::uint32_t>(first.header.kbps * 1000), 4);
    Append(index, static_cast<std::uint32_t>(first.header.sampleRate), 4);
    Append(index, 16, 2);
    Append(index, static_cast<std::uint32_t>(first.length), 2);
    Append(index, static_cast<std::uint32_t>(SamplesPerFrame(first)), 4);
    for (std::size_t i = 1; i < stream.frames.size(); ++i) {
        Append(index, static_cast<std::uint32_t>(stream.frames[i].offset), 4);
        Append(index, static_cast<std::uint32_t>(stream.frames[i].length), 4);
    }
    return index;
}

/// The decoder's PCM from `offset` on, at full scale, without the first `skipped` samples.
void FillPcm(ExpectedStream& expected, const Stream& stream, std::size_t offset, std::int64_t skipped) {
    const FrameRecord& first = stream.frames.front();
    const DecodedStream decoded = DecodeStream(std::span(stream.bytes).subspan(offset));
    const int channels = first.header.channels;
    expected.blockAlign = 2 * channels;
    expected.samplesPerFrame = SamplesPerFrame(first);
    expected.skippedSamples = skipped;
    expected.samples = static_cast<std::int64_t>(decoded.pcm.size()) / channels - skipped;
    for (std::size_t i = static_cast<std::size_t>(skipped * channels); i < decoded.pcm.size(); ++i) {
        const int value =
            first.header.layer == 3 ? std::clamp(2 * decoded.pcm[i], -32767, 32767) : decoded.pcm[i];
        Append(expected.pcm, static_cast<std::uint32_t>(value), 2);
    }
}

std::string NextName() {
    static std::atomic<int> counter = 0;
    return "stream" + std::to_string(counter++) + ".mp3";
}

std::int64_t EstimatedOffset(const Stream& stream, bool isConstant, std::size_t frame) {
    const FrameRecord& first = stream.frames.front();
    if (isConstant)
        return static_cast<std::int64_t>(frame) * first.length;
    const double bytes = static_cast<double>(SamplesPerFrame(first)) / first.header.sampleRate *
                         static_cast<double>(frame) * (first.header.kbps * 1000) / 8;
    return std::max<std::int64_t>(static_cast<std::int64_t>(bytes) - 1, 0);
}

/// The test at the middle of the file, on which the choice of arithmetic rests.
bool IsTakenAsConstant(const Stream& stream) {
    const FrameRecord& first = stream.frames.front();
    if (first.header.sampleRate == 48000 || first.header.sampleRate == 24000)
        return true;
    const auto length = static_cast<std::size_t>(first.length);
    const std::size_t middle = stream.bytes.size() / length / 2 * length;
    return stream.bytes[middle] == stream.bytes[0] &&
           (stream.bytes[middle + 1] & 0xFE) == (stream.bytes[1] & 0xFE) &&
           (stream.bytes[middle + 2] & 0xFC) == (stream.bytes[2] & 0xFC);
}

} // namespace

std::vector<std::uint8_t> ExpectedStream::Answer(std::int64_t start, std::uint32_t count) const {
    std::vector<std::uint8_t> answer(static_cast<std::size_t>(count) * static_cast<std::size_t>(blockAlign));
    if (start <= samples - static_cast<std::int64_t>(count))
        std::copy_n(pcm.begin() + static_cast<std::ptrdiff_t>(start * blockAlign), answer.size(),
                    answer.begin());
    return answer;
}

ExpectedStream AddIndexedStream(const ScratchFolder& folder, const Stream& stream) {
    ExpectedStream expected;
    const std::string name = NextName();
    expected.path = folder.Add(name, stream.bytes);
    folder.Add(name + ".idx", IndexOf(stream));
    FillPcm(expected, stream, stream.frames.at(1).offset, 0);
    return expected;
}

ExpectedStream AddPlainStream(const ScratchFolder& folder, const Stream& stream) {
    ExpectedStream expected;
    expected.path = folder.Add(NextName(), stream.bytes);
    FillPcm(expected, stream, 0, stream.frames.front().header.layer == 3 ? 1100 : 0);
    return expected;
}

bool IsFoundByArithmetic(const Stream& stream) {
    const bool isConstant = IsTakenAsConstant(stream);
    for (std::size_t n = 1; n < stream.frames.size(); ++n) {
        const std::int64_t offset = EstimatedOffset(stream, isConstant, n);
        if (offset <= static_cast<std::int64_t>(stream.frames[n - 1].offset) ||
            offset > static_cast<std::int64_t>(stream.frames[n].offset))
            return false;
    }
    return true;
}

} // namespace test
