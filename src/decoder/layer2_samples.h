/// The samples of a layer II frame (ISO/IEC 11172-3, 2.4.3.3).
#pragma once

#include "decoder/bit_reader.h"

#include <cstdint>
#include <span>

namespace trnmpa {

/// Samples of one granule as they were coded, 0 to levels - 1, by channel, slot and subband.
struct GranuleSamples {
    static constexpr int kSubbands = 32;
    static constexpr int kSlots = 3;

    std::int32_t value[2][kSlots][kSubbands];
};

/// Where the codes of a granule are. All granules of a frame have the same layout, so each code can be read
/// without reading those before it.
class SampleLayout {
public:
    static constexpr int kSubbands = GranuleSamples::kSubbands;

    /// Adds the samples that come next, of a quantisation class (0 to 17; 0 has none).
    void Add(int quantisationClass, int channel, int subband);
    /// The same for samples that serve both channels.
    void AddShared(int quantisationClass, int subband);

    /// What is to be taken from the samples of each subband to centre them on zero.
    std::span<const std::int32_t, kSubbands> Centres(int channel) const {
        return std::span<const std::int32_t, kSubbands>(centre_[channel]);
    }

private:
    friend void ReadSamples(BitReader& bits, const SampleLayout& layout, GranuleSamples& samples);

    struct Code {
        std::uint16_t offset; ///< in the granule, in bits
        std::uint8_t bits;    ///< of one code
        std::uint8_t channel;
        std::uint8_t subband;
    };
    struct CodeList {
        Code code[2 * kSubbands] = {};
        int count = 0;

        void Add(const Code& added) { code[count++] = added; }
        std::span<const Code> Codes() const { return {code, static_cast<std::size_t>(count)}; }
    };

    CodeList grouped_; ///< three samples in one code
    CodeList single_;  ///< three codes of one sample
    std::int32_t centre_[2][kSubbands] = {};
    int granuleBits_ = 0;
    int firstShared_ = kSubbands;
};

/// Reads the samples of one granule; those that the layout does not have are left as they are. Behind the
/// bits must lie AMPBitstream::kZerosBehind zero bytes.
void ReadSamples(BitReader& bits, const SampleLayout& layout, GranuleSamples& samples);

} // namespace trnmpa
