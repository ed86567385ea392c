#include "reader/slices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace test {

Pcm Slice::Samples() const {
    Pcm pcm(bytes.size() / sizeof(std::int16_t));
    if (!pcm.empty())
        std::memcpy(pcm.data(), bytes.data(), pcm.size() * sizeof(std::int16_t));
    return pcm;
}

Slice ReadSlice(TRN_MpAudioFileReader& reader) {
    Slice slice;
    unsigned char* data = nullptr;
    std::int32_t length = -1;
    slice.result = reader.ReadFrame(&data, length, &slice.format, slice.atEnd);
    slice.hasData = data != nullptr;
    if (slice.hasData)
        slice.bytes.assign(data, data + length);
    return slice;
}

Slice ReadSliceAt(TRN_MpAudioFileReader& reader, std::uint32_t number) {
    reader.SeekTo(number);
    return ReadSlice(reader);
}

std::int32_t StartSlices(TRN_MpAudioFileReader& reader, const std::filesystem::path& path,
                         std::int64_t sliceTime) {
    if (reader.Initialize() != 1 || reader.SetPerPCMFrameTime(sliceTime) != 1 ||
        reader.SetInputFile(os::ToAutomationString(Wide(path))) != 1)
        return 0;
    return reader.StartRead();
}

std::vector<Slice> ReadAllSlices(TRN_MpAudioFileReader& reader) {
    std::vector<Slice> slices;
    for (Slice slice = ReadSlice(reader); slice.result == 1; slice = ReadSlice(reader))
        slices.push_back(slice);
    return slices;
}

Bytes Joined(const std::vector<Slice>& slices) {
    Bytes bytes;
    for (const Slice& slice : slices)
        bytes.insert(bytes.end(), slice.bytes.begin(), slice.bytes.end());
    return bytes;
}

std::int32_t SampleOf(std::span<const std::uint8_t> bytes, int bits) {
    if (bits == 8)
        return bytes[0] - 128;
    std::uint32_t raw = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(bits) / 8; ++i)
        raw |= std::uint32_t{bytes[i]} << (32 - bits + 8 * static_cast<int>(i));
    return static_cast<std::int32_t>(raw) >> (32 - bits);
}

std::int64_t LargestDistance(std::span<const std::uint8_t> left, std::span<const std::uint8_t> right,
                             int bits) {
    EXPECT_EQ(left.size(), right.size());
    const std::size_t width = static_cast<std::size_t>(bits) / 8;
    std::int64_t largest = 0;
    for (std::size_t at = 0; at + width <= std::min(left.size(), right.size()); at += width)
        largest = std::max(largest, std::abs(std::int64_t{SampleOf(left.subspan(at, width), bits)} -
                                             SampleOf(right.subspan(at, width), bits)));
    return largest;
}

WAVEFORMATEX PcmFormat(std::uint32_t rate, std::uint16_t channels, std::uint16_t bits) {
    WAVEFORMATEX format = {};
    format.wFormatTag = 1;
    format.nChannels = channels;
    format.nSamplesPerSec = rate;
    format.wBitsPerSample = bits;
    format.nBlockAlign = static_cast<std::uint16_t>(std::uint32_t{channels} * bits / 8);
    format.nAvgBytesPerSec = rate * format.nBlockAlign;
    return format;
}

} // namespace test
