#include "decoder/layer2_samples.h"

#include "decoder/tables/layer2_tables.h"

#include <algorithm>

namespace trnmpa {

namespace {

constexpr bool IsGrouped(int quantisationClass) {
    return quantisationClass == 1 || quantisationClass == 2 || quantisationClass == 4;
}

/// Three samples by code of `Bits` bits: its digits to the base `Levels`, the lowest first. The last code of
/// the table gives zeros once it is centred.
template <int Bits, int Levels>
struct GroupTable {
    std::uint8_t digit[1 << Bits][4] = {};

    constexpr GroupTable() {
        for (int code = 0; code < 1 << Bits; ++code) {
            int rest = code;
            for (int i = 0; i < GranuleSamples::kSlots; ++i, rest /= Levels)
                digit[code][i] = static_cast<std::uint8_t>(rest % Levels);
        }
        for (int i = 0; i < GranuleSamples::kSlots; ++i)
            digit[(1 << Bits) - 1][i] = (Levels - 1) / 2;
    }
};

constexpr GroupTable<5, 3> kGroups3;
constexpr GroupTable<7, 5> kGroups5;
constexpr GroupTable<10, 9> kGroups9;

const std::uint8_t* DigitsOf(int codeBits, std::uint64_t code) {
    switch (codeBits) {
    case 5:
        return kGroups3.digit[code];
    case 7:
        return kGroups5.digit[code];
    default:
        return kGroups9.digit[code];
    }
}

/// At least 57 bits, the one at `position` on top.
std::uint64_t WindowAt(const std::uint8_t* bytes, int position) {
    return LoadBigEndian64(bytes + (position >> 3)) << (position & 7);
}

} // namespace

void SampleLayout::Add(int quantisationClass, int channel, int subband) {
    if (quantisationClass == 0)
        return;
    const Code code = {static_cast<std::uint16_t>(granuleBits_), tables::kClassCodeBits[quantisationClass],
                       static_cast<std::uint8_t>(channel), static_cast<std::uint8_t>(subband)};
    const bool isGrouped = IsGrouped(quantisationClass);
    (isGrouped ? grouped_ : single_).Add(code);
    granuleBits_ += (isGrouped ? 1 : GranuleSamples::kSlots) * code.bits;
    centre_[channel][subband] = (tables::kClassLevels[quantisationClass] - 1) / 2;
}

void SampleLayout::AddShared(int quantisationClass, int subband) {
    firstShared_ = std::min(firstShared_, subband);
    Add(quantisationClass, 0, subband);
    centre_[1][subband] = centre_[0][subband];
}

void ReadSamples(BitReader& bits, const SampleLayout& layout, GranuleSamples& samples) {
    // Past the body's end all bits are zero, so there it starts at the first of them; a granule has room
    // there.
    const int start = std::min(bits.Position(), bits.SizeInBits());
    const std::uint8_t* bytes = bits.Bytes();
    for (const SampleLayout::Code& code : layout.single_.Codes()) {
        const std::uint64_t window = WindowAt(bytes, start + code.offset);
        const std::uint64_t mask = (std::uint64_t{1} << code.bits) - 1;
        auto& value = samples.value[code.channel];
        value[0][code.subband] = static_cast<std::int32_t>(window >> (64 - code.bits));
        value[1][code.subband] = static_cast<std::int32_t>(window >> (64 - 2 * code.bits) & mask);
        value[2][code.subband] = static_cast<std::int32_t>(window >> (64 - 3 * code.bits) & mask);
    }
    for (const SampleLayout::Code& code : layout.grouped_.Codes()) {
        const std::uint64_t window = WindowAt(bytes, start + code.offset);
        const std::uint8_t* digits = DigitsOf(code.bits, window >> (64 - code.bits));
        for (int i = 0; i < GranuleSamples::kSlots; ++i)
            samples.value[code.channel][i][code.subband] = digits[i];
    }
    for (int i = 0; i < GranuleSamples::kSlots; ++i)
        std::copy(samples.value[0][i] + layout.firstShared_, std::end(samples.value[0][i]),
                  samples.value[1][i] + layout.firstShared_);
    bits.Skip(layout.granuleBits_);
}

} // namespace trnmpa
