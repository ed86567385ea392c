#include "trnlameMp3Decoder/frame_header.h"

namespace mp3 {

namespace {

/// kbit/s by the header's index; 0 is free format.
constexpr std::int32_t kLayer2Rates[15] = {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384};
constexpr std::int32_t kLayer3Rates[15] = {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320};
constexpr std::int32_t kLowRates[15] = {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160};

constexpr std::int32_t kSampleRates[3] = {44100, 48000, 32000};

std::int32_t BitRate(const StreamFormat& format, std::size_t index) {
    const auto& table = format.lowRate ? kLowRates : format.layer == 2 ? kLayer2Rates : kLayer3Rates;
    return table[index] * 1000;
}

} // namespace

std::size_t FrameHeader::SideInfoBytes() const {
    if (format.lowRate)
        return format.channels == 1 ? 9 : 17;
    return format.channels == 1 ? 17 : 32;
}

std::optional<FrameHeader> ParseHeader(std::span<const std::uint8_t, kHeaderBytes> bytes) {
    const std::uint32_t version = bytes[1] >> 3 & 3;
    const std::uint32_t layerCode = bytes[1] >> 1 & 3;
    const std::size_t bitRateIndex = bytes[2] >> 4;
    const std::size_t sampleRateIndex = bytes[2] >> 2 & 3;
    const bool synced = bytes[0] == 0xFF && (bytes[1] & 0xE0) == 0xE0;
    const bool served = version != 1 && (layerCode == 1 || layerCode == 2);
    if (!synced || !served || bitRateIndex == 0 || bitRateIndex == 15 || sampleRateIndex == 3)
        return std::nullopt;
    FrameHeader header;
    StreamFormat& format = header.format;
    format.lowRate = version != 3;
    format.mpeg25 = version == 0;
    format.layer = static_cast<std::int32_t>(4 - layerCode);
    format.sampleRate = kSampleRates[sampleRateIndex] >> (format.lowRate ? 1 : 0) >> (format.mpeg25 ? 1 : 0);
    format.channels = bytes[3] >> 6 == 3 ? 1 : 2;
    header.bitRate = BitRate(format, bitRateIndex);
    header.hasCrc = (bytes[1] & 1) == 0;
    const std::int32_t padding = bytes[2] >> 1 & 1;
    const std::int32_t frameBytes = format.FrameSamples() / 8 * header.bitRate / format.sampleRate + padding;
    header.frameBytes = static_cast<std::size_t>(frameBytes);
    return header;
}

} // namespace mp3
