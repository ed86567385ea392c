/// The streams that a selftest reads: built in, so that it needs nothing but the module.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace mpatool {

/// A stream and what a module makes of it.
struct SelftestStream {
    const wchar_t* name;                 ///< of the file that it stands in
    std::span<const std::uint8_t> bytes; ///< the stream
    std::int32_t classIdentifier;        ///< as the probe tells it
    std::uint32_t sampleRate;            ///< Hz
    std::uint16_t channels;
    std::int64_t samples; ///< that are read, per channel
    const char* digest;   ///< PcmDigest of these from sample 0 on, by the module's own decoder
};

/// One of each layer, of constant bit rate.
std::span<const SelftestStream> SelftestStreams();

/// The Layer III stream once more, to be read with an index: other samples, since the first frame is left
/// out.
const SelftestStream& IndexedStream();

/// Frames that the index of IndexedStream has.
inline constexpr std::uint32_t kIndexedFrames = 40;

/// A stream whose bit rate changes: the probe leaves it undescribed.
std::string VariableStream();

/// A digest of PCM: 64-bit FNV-1a of its bytes, in hexadecimal digits.
class PcmDigest {
public:
    void Add(std::span<const std::uint8_t> bytes);
    std::string Text() const;

private:
    std::uint64_t hash_ = 14695981039346656037u;
};

} // namespace mpatool
