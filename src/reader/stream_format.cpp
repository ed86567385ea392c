#include "reader/stream_format.h"

#include <algorithm>
#include <limits>

namespace trnmpa {

namespace {

constexpr std::uint16_t kPcmFormatTag = 1;
constexpr std::uint16_t kIndexFormatExtraBytes = 18;

std::int32_t Saturated(std::uint32_t value) {
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min<std::uint32_t>(value, kMost));
}

} // namespace

WAVEFORMATEX PcmFormat(std::uint16_t channels, std::uint32_t sampleRate, std::uint16_t bitsPerSample) {
    WAVEFORMATEX format = {};
    format.wFormatTag = kPcmFormatTag;
    format.nChannels = channels;
    format.nSamplesPerSec = sampleRate;
    format.wBitsPerSample = bitsPerSample;
    format.nBlockAlign = static_cast<std::uint16_t>(std::uint32_t{channels} * bitsPerSample / 8);
    format.nAvgBytesPerSec = sampleRate * format.nBlockAlign;
    return format;
}

WAVEFORMATEX PcmFormatOf(const MpaIndexHeader& header) {
    WAVEFORMATEX format = PcmFormat(header.channels, header.sampleRate, header.bitsPerSample);
    format.cbSize = kIndexFormatExtraBytes;
    return format;
}

WAVEFORMATEX PcmFormatOf(const AMPFrameInfo& frame) {
    return PcmFormat(frame.stereo != 0 ? 2 : 1, static_cast<std::uint32_t>(frame.sampleRate),
                     static_cast<std::uint16_t>(frame.bitsPerSample));
}

AMPFrameInfo FrameInfoOf(const MpaIndexHeader& header) {
    AMPFrameInfo info;
    info.synced = 1;
    info.layer = header.layer;
    info.version = header.version;
    info.stereo = header.channels == 2 ? 1 : 0;
    info.bitsPerSample = header.bitsPerSample;
    info.sampleRate = Saturated(header.sampleRate);
    info.bitRate = Saturated(header.bitRate);
    info.frameBytes = header.frameBytes;
    const std::uint64_t pcmBytes = std::uint64_t{header.samplesPerFrame} * PcmFormatOf(header).nBlockAlign;
    if (pcmBytes <= std::numeric_limits<std::int32_t>::max())
        info.pcmBytes = static_cast<std::int32_t>(pcmBytes);
    return info;
}

} // namespace trnmpa
