#include "mpatool/pcm/wave_writer.h"

#include <limits>
#include <string_view>

namespace mpatool {

namespace {

constexpr std::uint32_t kSizeElsewhere = std::numeric_limits<std::uint32_t>::max();

constexpr std::uint32_t kChunkHeadBytes = 8;
constexpr std::uint32_t kFormatBytes = 16;
constexpr std::uint32_t kSizes64Bytes = 28;
constexpr std::uint16_t kFormatTagPcm = 1;

/// Collects little-endian fields.
class FieldWriter {
public:
    FieldWriter& Tag(std::string_view fourCharacters) {
        bytes_.insert(bytes_.end(), fourCharacters.begin(), fourCharacters.end());
        return *this;
    }
    template <typename Unsigned>
    FieldWriter& Number(Unsigned value) {
        for (std::size_t i = 0; i < sizeof value; ++i)
            bytes_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        return *this;
    }
    std::vector<std::uint8_t> Take() { return std::move(bytes_); }

private:
    std::vector<std::uint8_t> bytes_;
};

void WriteFormatChunk(FieldWriter& out, const PcmFormat& format) {
    out.Tag("fmt ")
        .Number(kFormatBytes)
        .Number(kFormatTagPcm)
        .Number(format.channels)
        .Number(format.sampleRate)
        .Number(static_cast<std::uint32_t>(format.sampleRate * format.BytesPerSample()))
        .Number(format.BytesPerSample())
        .Number(format.bitsPerSample);
}

} // namespace

WAVEFORMATEX ToWaveFormat(const PcmFormat& format) {
    WAVEFORMATEX wave = {};
    wave.wFormatTag = kFormatTagPcm;
    wave.nChannels = format.channels;
    wave.nSamplesPerSec = format.sampleRate;
    wave.nAvgBytesPerSec = format.sampleRate * format.BytesPerSample();
    wave.nBlockAlign = format.BytesPerSample();
    wave.wBitsPerSample = format.bitsPerSample;
    return wave;
}

std::vector<std::uint8_t> WavePadding(std::uint64_t dataBytes) {
    return std::vector<std::uint8_t>(dataBytes % 2);
}

std::vector<std::uint8_t> WaveHeader(const PcmFormat& format, std::uint64_t dataBytes) {
    constexpr std::uint64_t kWaveTagBytes = 4;
    const std::uint64_t riffBytes =
        kWaveTagBytes + kChunkHeadBytes + kFormatBytes + kChunkHeadBytes + dataBytes + dataBytes % 2;
    FieldWriter out;
    if (riffBytes < kSizeElsewhere) {
        out.Tag("RIFF").Number(static_cast<std::uint32_t>(riffBytes)).Tag("WAVE");
        WriteFormatChunk(out, format);
        out.Tag("data").Number(static_cast<std::uint32_t>(dataBytes));
        return out.Take();
    }
    out.Tag("RF64").Number(kSizeElsewhere).Tag("WAVE");
    out.Tag("ds64")
        .Number(kSizes64Bytes)
        .Number(riffBytes + kChunkHeadBytes + kSizes64Bytes)
        .Number(dataBytes)
        .Number(dataBytes / format.BytesPerSample())
        .Number(std::uint32_t{0}); // no table of further chunk sizes
    WriteFormatChunk(out, format);
    out.Tag("data").Number(kSizeElsewhere);
    return out.Take();
}

} // namespace mpatool
