#include "mpa/frame_header.h"

namespace trnmpa {

namespace {

using BitRateRow = std::array<std::int16_t, 15>;

// ISO/IEC 11172-3, 2.4.2.3 and ISO/IEC 13818-3, 2.4.2.3: kbit/s by bit-rate index, one row a layer.
constexpr std::array<BitRateRow, 3> kBitRates = {{
    {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
    {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
}};
constexpr std::array<BitRateRow, 3> kLsfBitRates = {{
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
    {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
    {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
}};
constexpr std::array<std::int32_t, 4> kSampleRates = {44100, 48000, 32000, 0};

std::int32_t BitRateOf(const MpaFrameHeader& header) {
    const auto row = static_cast<std::size_t>(header.layer) - 1;
    const auto index = static_cast<std::size_t>(header.bitRateIndex);
    const auto& rows = header.lsf != 0 ? kLsfBitRates : kBitRates;
    return row < rows.size() && index < rows[row].size() ? rows[row][index] : 0;
}

std::int32_t SampleRateOf(const MpaFrameHeader& header, bool isMpeg25) {
    const std::int32_t rate = kSampleRates[static_cast<std::size_t>(header.sampleRateIndex)];
    if (header.lsf == 0)
        return rate;
    return isMpeg25 ? rate >> 2 : rate >> 1;
}

/// A layer II frame at the lower sampling frequencies is measured like layer III, at half its real length.
/// The probe's answers have always come from that measure and stay so.
std::int32_t FrameBytesOf(const MpaFrameHeader& header) {
    if (header.sampleRate == 0)
        return 0;
    if (header.layer == 1)
        return header.bitRate * 12000 / header.sampleRate * 4 + header.padding * 4;
    const std::int32_t factor = header.lsf != 0 ? 72000 : 144000;
    return header.bitRate * factor / header.sampleRate + header.padding;
}

} // namespace

bool IsValidFrameHeader(const FrameHeaderBytes& bytes) noexcept {
    if (bytes[0] != 0xFF || (bytes[1] & 0xE0) != 0xE0)
        return false;
    const int layerBits = bytes[1] >> 1 & 3;
    const int bitRateIndex = bytes[2] >> 4;
    const int sampleRateIndex = bytes[2] >> 2 & 3;
    return layerBits != 0 && layerBits != 3 && bitRateIndex != 15 && sampleRateIndex != 3 &&
           bitRateIndex != 0;
}

void DecodeFrameHeader(const FrameHeaderBytes& bytes, MpaFrameHeader& header) noexcept {
    header.bitRateIndex = bytes[2] >> 4;
    header.sampleRateIndex = bytes[2] >> 2 & 3;
    header.lsf = (bytes[1] & 0x08) == 0 ? 1 : 0;
    header.padding = static_cast<std::uint8_t>(bytes[2] >> 1 & 1);
    header.layer = (4 - (bytes[1] >> 1 & 3)) & 3;
    header.channelMode = bytes[3] >> 6;
    header.channels = header.channelMode == 3 ? 1 : 2;
    header.bitRate = BitRateOf(header);
    header.sampleRate = SampleRateOf(header, (bytes[1] & 0x18) == 0);
    header.frameBytes = FrameBytesOf(header);
}

std::int32_t SamplesPerFrame(std::int32_t layer, std::int32_t version) noexcept {
    if (layer == 1)
        return 384;
    return layer == 3 && version == 2 ? 576 : 1152;
}

MpaFrameInfo FillFrameInfo(const MpaFrameHeader& header) noexcept {
    MpaFrameInfo info;
    info.layer = static_cast<std::uint8_t>(header.layer);
    info.version = header.lsf != 0 ? 2 : 1;
    info.frameBytes = header.frameBytes;
    info.bitRate = header.bitRate * 1000;
    info.sampleRate = header.sampleRate;
    info.stereo = header.channelMode != 3 ? 1 : 0;
    info.pcmBytesPerFrame = header.channels * 2 * SamplesPerFrame(info.layer, info.version);
    return info;
}

bool SameCbrHeader(const FrameHeaderBytes& x, const FrameHeaderBytes& y) noexcept {
    return x[0] == y[0] && (x[1] & 0xFE) == (y[1] & 0xFE) && (x[2] & 0xFC) == (y[2] & 0xFC);
}

} // namespace trnmpa
