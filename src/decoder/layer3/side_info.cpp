#include "decoder/layer3/side_info.h"

#include "decoder/bit_window.h"

#include <algorithm>
#include <array>

namespace trnmpa {

namespace {

constexpr std::uint32_t kMaximumBigValues = 288;

void ParseWindowSwitching(BitWindow& bits, GranuleInfo& granule) {
    granule.blockType = bits.Get(2);
    granule.mixedBlock = bits.Get(1);
    granule.tableSelect[0] = bits.Get(5);
    granule.tableSelect[1] = bits.Get(5);
    for (std::uint32_t& gain : granule.subblockGain)
        gain = bits.Get(3);
    granule.region0Count = granule.IsShort() && granule.mixedBlock == 0 ? 8 : 7;
    granule.region1Count = 20 - granule.region0Count;
}

GranuleInfo ParseGranule(BitWindow& bits, bool mpeg1) {
    static_assert(12 + 9 + 8 + 9 + 1 <= BitWindow::kRefilledBits);
    bits.Refill();
    GranuleInfo granule;
    granule.part23Length = bits.Get(12);
    granule.bigValues = std::min(bits.Get(9), kMaximumBigValues);
    granule.globalGain = bits.Get(8);
    granule.scaleFactorCompress = bits.Get(mpeg1 ? 4 : 9);
    granule.windowSwitching = bits.Get(1);
    bits.Refill();
    if (granule.windowSwitching != 0) {
        ParseWindowSwitching(bits, granule);
    } else {
        for (std::uint32_t& table : granule.tableSelect)
            table = bits.Get(5);
        granule.region0Count = bits.Get(4);
        granule.region1Count = bits.Get(3);
    }
    if (mpeg1)
        granule.preflag = bits.Get(1);
    granule.scaleFactorScale = bits.Get(1);
    granule.count1TableSelect = bits.Get(1);
    return granule;
}

int PrivateBitCount(bool mpeg1, int channels) {
    if (mpeg1)
        return channels == 1 ? 5 : 3;
    return channels == 1 ? 1 : 2;
}

} // namespace

SideInfo ParseSideInfo(const DecoderHeader& header,
                       std::span<const std::uint8_t, SideInfo::kMaximumBytes> bytes) {
    const bool mpeg1 = header.lowSamplingFrequency == 0;
    std::array<std::uint8_t, SideInfo::kMaximumBytes + BitWindow::kBytesAhead> padded = {};
    std::ranges::copy(bytes, padded.begin());
    BitWindow bits(BitReader(padded.data(), SideInfo::kMaximumBytes));
    SideInfo info;
    info.mainDataBegin = bits.Get(mpeg1 ? 9 : 8);
    info.privateBits = bits.Get(PrivateBitCount(mpeg1, header.channels));
    if (mpeg1) {
        for (int channel = 0; channel < header.channels; ++channel)
            for (std::uint32_t& selection : info.scaleFactorSelection[channel])
                selection = bits.Get(1);
    }
    for (int granule = 0; granule < header.GranuleCount(); ++granule)
        for (int channel = 0; channel < header.channels; ++channel)
            info.granule[granule][channel] = ParseGranule(bits, mpeg1);
    return info;
}

} // namespace trnmpa
