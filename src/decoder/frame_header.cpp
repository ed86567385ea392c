#include "decoder/frame_header.h"

#include "decoder/tables/header_tables.h"

namespace trnmpa {

namespace {

constexpr int kLayer3 = 3;

bool StartsSync(std::uint8_t first, std::uint8_t second) {
    return first == 0xFF && (second & 0xE0) == 0xE0;
}

std::int32_t FrameBytes(const DecoderHeader& header) {
    const std::int32_t kbps = header.bitRateKbps;
    if (header.layer == 1)
        return 12000 * kbps / header.sampleRate * 4 + (header.padding != 0 ? 4 : 0);
    std::int32_t bytes = 144000 * kbps / header.sampleRate;
    if (header.lowSamplingFrequency != 0 && header.layer == kLayer3)
        bytes /= 2;
    return bytes + header.padding;
}

} // namespace

int DecoderHeader::SideInfoBytes() const {
    if (lowSamplingFrequency != 0)
        return channels == 1 ? 9 : 17;
    return channels == 1 ? 17 : 32;
}

int DecoderHeader::SamplesPerFrame() const {
    if (layer == 2)
        return 1152;
    if (layer == kLayer3)
        return lowSamplingFrequency != 0 ? 576 : 1152;
    return 384;
}

bool IsAcceptedHeader(const HeaderBytes& bytes, const DecoderHeader* locked) {
    if (!StartsSync(bytes[0], bytes[1]))
        return false;
    const int layerBits = bytes[1] >> 1 & 3;
    const int bitRateIndex = bytes[2] >> 4;
    const int sampleRateIndex = bytes[2] >> 2 & 3;
    constexpr int kReservedLayerBits = 0;
    constexpr int kLayer1Bits = 3;
    if (layerBits == kReservedLayerBits || layerBits == kLayer1Bits)
        return false;
    if (bitRateIndex == 15 || sampleRateIndex == 3 || bitRateIndex == 0)
        return false;
    if (locked == nullptr)
        return true;
    const int lowSamplingFrequency = (bytes[1] & 0x08) != 0 ? 0 : 1;
    return lowSamplingFrequency == locked->lowSamplingFrequency && 4 - layerBits == locked->layer &&
           sampleRateIndex == locked->sampleRateIndex;
}

DecoderHeader ParseHeader(const HeaderBytes& bytes) {
    DecoderHeader header;
    header.lowSamplingFrequency = (bytes[1] & 0x08) != 0 ? 0 : 1;
    header.mpeg25 = (bytes[1] & 0x18) == 0 ? 1 : 0;
    header.layer = 4 - (bytes[1] >> 1 & 3);
    header.hasCrc = (bytes[1] & 1) != 0 ? 0 : 1;
    header.bitRateIndex = bytes[2] >> 4;
    header.sampleRateIndex = bytes[2] >> 2 & 3;
    header.padding = bytes[2] >> 1 & 1;
    header.privateBit = bytes[2] & 1;
    header.mode = bytes[3] >> 6;
    header.modeExtension = bytes[3] >> 4 & 3;
    header.copyright = bytes[3] >> 3 & 1;
    header.original = bytes[3] >> 2 & 1;
    header.emphasis = bytes[3] & 3;
    header.channels = header.mode == 3 ? 1 : 2;
    header.bitRateKbps =
        tables::kBitRateKbps[header.lowSamplingFrequency][header.layer - 1][header.bitRateIndex];
    header.sampleRate =
        tables::kMpeg1SampleRate[header.sampleRateIndex] >> (header.lowSamplingFrequency + header.mpeg25);
    header.frameBytes = FrameBytes(header);
    return header;
}

int BytesToNextCandidate(const HeaderBytes& bytes) {
    if (StartsSync(bytes[1], bytes[2]))
        return 1;
    if (StartsSync(bytes[2], bytes[3]))
        return 2;
    return bytes[3] == 0xFF ? 3 : 4;
}

} // namespace trnmpa
