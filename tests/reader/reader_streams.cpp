#include "reader/reader_streams.h"

#include "decoder/stream_decode.h"

#include <algorithm>
#include <stdexcept>

namespace test {

namespace {

Pcm AsDelivered(std::vector<std::int16_t> pcm, bool isLayer3) {
    if (isLayer3)
        for (std::int16_t& value : pcm)
            value = static_cast<std::int16_t>(std::clamp(2 * value, -32767, 32767));
    return pcm;
}

void Put(Bytes& bytes, std::uint32_t value, int width) {
    for (int i = 0; i < width; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

} // namespace

bitstream::StreamOptions SteadyOptions(int frames) {
    bitstream::StreamOptions options;
    options.seed = 77;
    options.frames = frames;
    options.padding = bitstream::Padding::kNever;
    options.layer3.blocks = {{0}, {1}, {2}, {3}};
    return options;
}

bitstream::Stream SteadyStream(int frames) {
    return bitstream::WriteStream(SteadyOptions(frames));
}

bitstream::Stream ChangingStream(int frames) {
    bitstream::StreamOptions options;
    options.seed = 78;
    options.frames = frames;
    options.bitrateIndices = {1, 3, 9, 14};
    return bitstream::WriteStream(options);
}

bitstream::Stream Layer2Stream(int frames) {
    bitstream::StreamOptions options;
    options.seed = 79;
    options.frames = frames;
    options.layer = 2;
    options.sampleRateIndex = 1;
    options.bitrateIndices = {10};
    return bitstream::WriteStream(options);
}

Pcm Delivered(std::span<const std::uint8_t> frames, int skippedSamples) {
    const DecodedStream decoded = DecodeStream(frames);
    if (decoded.frames.empty())
        return {};
    const AMPFrameInfo& info = decoded.frames.front();
    Pcm pcm = AsDelivered(decoded.pcm, info.layer == 3);
    const auto skipped = static_cast<std::size_t>(skippedSamples) * (info.stereo != 0 ? 2u : 1u);
    pcm.erase(pcm.begin(), pcm.begin() + static_cast<std::ptrdiff_t>(std::min(skipped, pcm.size())));
    return pcm;
}

Pcm DeliveredFrom(const bitstream::Stream& stream, std::size_t first, int skippedSamples) {
    return Delivered(std::span(stream.bytes).subspan(stream.frames.at(first).offset), skippedSamples);
}

Bytes DescribingFrame(const bitstream::Stream& stream, std::string_view text) {
    Bytes frame(static_cast<std::size_t>(stream.frames.front().length));
    std::copy_n(stream.bytes.begin(), 4, frame.begin());
    if (frame.size() < 36 + text.size() && !text.empty())
        throw std::invalid_argument("the frame has no room for the text");
    for (std::size_t i = 0; i < text.size(); ++i)
        frame[36 + i] = static_cast<std::uint8_t>(text[i]);
    return frame;
}

Bytes Index::ToBytes() const {
    Bytes bytes;
    Put(bytes, header.frameCount, 4);
    Put(bytes, header.mediaFileSize, 4);
    Put(bytes, header.layer, 1);
    Put(bytes, header.version, 1);
    Put(bytes, header.channels, 2);
    Put(bytes, header.bitRate, 4);
    Put(bytes, header.sampleRate, 4);
    Put(bytes, header.bitsPerSample, 2);
    Put(bytes, header.frameBytes, 2);
    Put(bytes, header.samplesPerFrame, 4);
    for (const trnmpa::MpaIndexEntry& entry : entries) {
        Put(bytes, entry.frameOffset, 4);
        Put(bytes, entry.frameBytes, 4);
    }
    return bytes;
}

Index IndexOf(const bitstream::Stream& stream, std::size_t offset) {
    const model::Header& first = stream.frames.front().header;
    Index index;
    for (const bitstream::FrameRecord& frame : stream.frames)
        index.entries.push_back(
            {static_cast<std::uint32_t>(frame.offset + offset), static_cast<std::uint32_t>(frame.length)});
    index.entries.erase(index.entries.begin());
    index.header.frameCount = static_cast<std::uint32_t>(index.entries.size());
    index.header.mediaFileSize = static_cast<std::uint32_t>(stream.bytes.size() + offset);
    index.header.layer = static_cast<std::uint8_t>(first.layer);
    index.header.version = first.lsf ? 2 : 1;
    index.header.channels = static_cast<std::uint16_t>(first.channels);
    index.header.bitRate = static_cast<std::uint32_t>(first.kbps) * 1000;
    index.header.sampleRate = static_cast<std::uint32_t>(first.sampleRate);
    index.header.bitsPerSample = 16;
    index.header.frameBytes = static_cast<std::uint16_t>(first.frameBytes);
    index.header.samplesPerFrame = first.layer == 3 && first.lsf ? 576 : 1152;
    return index;
}

Bytes Joined(std::initializer_list<Bytes> parts) {
    Bytes bytes;
    for (const Bytes& part : parts)
        bytes.insert(bytes.end(), part.begin(), part.end());
    return bytes;
}

} // namespace test
