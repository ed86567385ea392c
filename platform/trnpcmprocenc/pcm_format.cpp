#include "trnpcmprocenc/pcm_format.h"

namespace pcm {

namespace {

constexpr std::uint16_t kPcmTag = 1;
/// 8-bit samples are unsigned, with silence at 128; others are signed.
constexpr std::uint8_t kUnsignedOffset = 0x80;

} // namespace

std::optional<Format> Understand(const WAVEFORMATEX& format) {
    const std::int32_t bits = format.wBitsPerSample;
    const bool knownBits = bits == 8 || bits == 16 || bits == 24 || bits == 32;
    const bool knownChannels = format.nChannels == 1 || format.nChannels == 2;
    if (format.wFormatTag != kPcmTag || !knownBits || !knownChannels || format.nSamplesPerSec == 0)
        return std::nullopt;
    const Format result{format.nSamplesPerSec, format.nChannels, bits};
    if (format.nBlockAlign != 0 && format.nBlockAlign != result.BlockBytes())
        return std::nullopt;
    return result;
}

std::int32_t ReadSample(const std::uint8_t* bytes, std::int32_t bits) {
    if (bits == 8)
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(bytes[0] ^ kUnsignedOffset) << 24);
    std::uint32_t value = 0;
    for (std::int32_t shift = 32 - bits; shift < 32; shift += 8)
        value |= static_cast<std::uint32_t>(*bytes++) << shift;
    return static_cast<std::int32_t>(value);
}

void WriteSample(std::uint8_t* bytes, std::int32_t bits, std::int32_t value) {
    auto rest = static_cast<std::uint32_t>(value);
    if (bits == 8)
        rest ^= kUnsignedOffset;
    for (std::int32_t done = 0; done < bits; done += 8, rest >>= 8)
        *bytes++ = static_cast<std::uint8_t>(rest);
}

} // namespace pcm
