// The wide lookups against codes read bit by bit, on granules from random numbers. Every sequence of bits is
// a sequence of codes, so what is drawn is valid and hostile alike: data that ends in the middle of a
// granule, granules that say they are longer or shorter than their codes, reservoirs that hold nothing.

#include "decoder/bitstream.h"
#include "decoder/layer3/spectrum.h"
#include "decoder/literal/spectrum.h"
#include "decoder/stream_decode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

namespace {

class Draw {
public:
    explicit Draw(std::uint64_t seed) : engine_(seed) {}

    /// 0 to `count` - 1.
    std::uint32_t Below(std::uint32_t count) { return static_cast<std::uint32_t>(engine_() % count); }
    /// The same, small numbers more often.
    std::uint32_t Small(std::uint32_t count) { return Below(Below(Below(count) + 1) + 1); }

    /// Bits of one kind: evenly mixed, mostly 0 (long codes) or mostly 1 (short ones).
    void Fill(std::span<std::uint8_t> bytes) {
        const std::uint32_t kind = Below(4);
        for (std::uint8_t& byte : bytes) {
            const std::uint64_t bits = engine_();
            const std::uint64_t sparse = bits & bits >> 8 & bits >> 16;
            byte = static_cast<std::uint8_t>(kind < 2 ? bits : kind == 2 ? sparse : ~sparse);
        }
    }

private:
    std::mt19937_64 engine_;
};

trnmpa::DecoderHeader DrawHeader(Draw& draw) {
    trnmpa::DecoderHeader header;
    const std::uint32_t row = draw.Below(3);
    header.layer = 3;
    header.lowSamplingFrequency = row > 0 ? 1 : 0;
    header.mpeg25 = row > 1 ? 1 : 0;
    header.sampleRateIndex = static_cast<int>(draw.Below(3));
    return header;
}

void DrawWindow(Draw& draw, trnmpa::GranuleInfo& info) {
    info.windowSwitching = draw.Below(3) == 0 ? 1 : 0;
    if (info.windowSwitching == 0)
        return;
    info.blockType = draw.Below(4);
    info.mixedBlock = draw.Below(2);
    for (std::uint32_t& gain : info.subblockGain)
        gain = draw.Below(8);
}

trnmpa::GranuleInfo DrawGranule(Draw& draw) {
    trnmpa::GranuleInfo info;
    info.bigValues = draw.Below(40) == 0 ? 288 - draw.Small(288) : draw.Small(60);
    info.part23Length = draw.Below(10) == 0 ? draw.Below(4096) : 4 * info.bigValues + draw.Small(400);
    info.globalGain = draw.Below(256);
    for (std::uint32_t& table : info.tableSelect)
        table = draw.Below(32);
    info.region0Count = draw.Below(16);
    info.region1Count = draw.Below(8);
    info.preflag = draw.Below(2);
    info.scaleFactorScale = draw.Below(2);
    info.count1TableSelect = draw.Below(2);
    DrawWindow(draw, info);
    return info;
}

trnmpa::ScaleFactors DrawFactors(Draw& draw) {
    trnmpa::ScaleFactors factors;
    for (std::uint8_t& factor : factors.longBand)
        factor = static_cast<std::uint8_t>(draw.Below(32));
    for (auto& window : factors.shortBand)
        for (std::uint8_t& factor : window)
            factor = static_cast<std::uint8_t>(draw.Below(32));
    return factors;
}

/// The same main data in the reservoir that is tested and in the literal one.
class Readers {
public:
    void Append(std::span<const std::uint8_t> bytes) {
        test::MemorySource source(bytes);
        fast.SetSource(&source);
        fast.AppendToReservoir(static_cast<int>(bytes.size()));
        fast.SetSource(nullptr);
        literal.Append(bytes);
    }
    void Rewind(int bytes) {
        fast.RewindToFrameStart(bytes);
        literal.RewindToFrameStart(bytes);
    }

    trnmpa::AMPBitstream fast;
    test::literal::Reservoir literal;
};

/// Reads one granule with both; true when they agree in every bit but the signs of zeros, and in the place.
bool ReadsAlike(Readers& readers, const trnmpa::DecoderHeader& header, const trnmpa::GranuleInfo& info,
                const trnmpa::ScaleFactors& factors) {
    const int length = static_cast<int>(info.part23Length);
    const int literalStart = readers.literal.BitsRemaining();
    const auto lines = test::literal::ReadLines(readers.literal, header, info, literalStart - length);
    const auto expected = test::literal::Requantise(lines, header, info, factors);

    const trnmpa::LineGains gains(info, trnmpa::LayoutOf(header, info), factors);
    trnmpa::BitReader& bits = readers.fast.Reader();
    const int start = bits.Position();
    float spectrum[576];
    std::memset(spectrum, 0x55, sizeof spectrum);
    const int count = trnmpa::ReadSpectrum(bits, header, info, gains, start + length, spectrum);

    const bool isSame = count == expected.nonZeroCount &&
                        std::equal(std::begin(spectrum), std::end(spectrum), expected.value.begin()) &&
                        bits.Position() - start == literalStart - readers.literal.BitsRemaining();
    readers.literal.SeekToBitsRemaining(literalStart - length);
    bits.SetPosition(start + length);
    return isSame;
}

/// Frames of four granules, some of which go past the end of the data.
std::size_t CompareFrames(std::uint64_t seed, std::size_t granules) {
    Draw draw(seed);
    Readers readers;
    std::vector<std::uint8_t> bytes(600);
    trnmpa::DecoderHeader header;
    trnmpa::ScaleFactors factors;
    std::size_t differing = 0;
    for (std::size_t i = 0; i < granules; ++i) {
        if (i % 4 == 0) {
            const std::span<std::uint8_t> appended(bytes.data(), draw.Below(600));
            draw.Fill(appended);
            readers.Append(appended);
            readers.Rewind(static_cast<int>(draw.Below(3) == 0 ? draw.Small(2100) : 200 + draw.Below(600)));
        }
        if (i % 64 == 0) {
            header = DrawHeader(draw);
            factors = DrawFactors(draw);
        }
        const trnmpa::GranuleInfo info = DrawGranule(draw);
        if (!ReadsAlike(readers, header, info, factors) && differing++ == 0)
            ADD_FAILURE() << "seed " << seed << ", granule " << i;
    }
    return differing;
}

TEST(SpectrumComparison, WideLookupsReadWhatSingleBitsSay) {
    constexpr std::size_t kSeeds = 20;
    constexpr std::size_t kGranules = 60'000;
    std::size_t differing = 0;
    for (std::uint64_t seed = 1; seed <= kSeeds; ++seed)
        differing += CompareFrames(seed, kGranules);
    std::printf("%zu granules\n", kSeeds * kGranules);
    EXPECT_EQ(differing, 0u);
}

} // namespace
