#include "support/model/side_info.h"

#include "support/model/bit_reader.h"

#include <algorithm>

namespace test::model {

namespace {

void ReadSwitchedWindow(BitReader& bits, GranuleInfo& info) {
    info.blockType = bits.ReadInt(2);
    info.mixed = bits.ReadBit() != 0;
    info.tableSelect = {bits.ReadInt(5), bits.ReadInt(5), 0};
    for (int& gain : info.subblockGain)
        gain = bits.ReadInt(3);
    info.region0Count = info.blockType == 2 && !info.mixed ? 8 : 7;
    info.region1Count = 20 - info.region0Count;
}

void ReadNormalWindow(BitReader& bits, GranuleInfo& info) {
    for (int& table : info.tableSelect)
        table = bits.ReadInt(5);
    info.region0Count = bits.ReadInt(4);
    info.region1Count = bits.ReadInt(3);
}

GranuleInfo ReadGranule(BitReader& bits, bool lsf) {
    GranuleInfo info;
    info.part23Length = bits.ReadInt(12);
    info.bigValues = std::min(bits.ReadInt(9), 288);
    info.globalGain = bits.ReadInt(8);
    info.scalefacCompress = bits.ReadInt(lsf ? 9 : 4);
    info.windowSwitching = bits.ReadBit() != 0;
    if (info.windowSwitching)
        ReadSwitchedWindow(bits, info);
    else
        ReadNormalWindow(bits, info);
    info.preflag = !lsf && bits.ReadBit() != 0;
    info.scalefacScale = bits.ReadBit() != 0;
    info.count1Table = bits.ReadInt(1);
    return info;
}

} // namespace

SideInfo ParseSideInfo(const Header& header, std::span<const std::uint8_t> bytes) {
    BitReader bits(bytes);
    const auto channels = static_cast<std::size_t>(header.channels);
    SideInfo info;
    info.mainDataBegin = bits.ReadInt(header.lsf ? 8 : 9);
    if (header.lsf)
        info.privateBits = bits.ReadInt(channels == 1 ? 1 : 2);
    else
        info.privateBits = bits.ReadInt(channels == 1 ? 5 : 3);
    if (!header.lsf)
        for (std::size_t channel = 0; channel < channels; ++channel)
            for (bool& keep : info.scfsi[channel])
                keep = bits.ReadBit() != 0;
    for (std::size_t granule = 0; granule < static_cast<std::size_t>(header.Granules()); ++granule)
        for (std::size_t channel = 0; channel < channels; ++channel)
            info.granules[granule][channel] = ReadGranule(bits, header.lsf);
    return info;
}

} // namespace test::model
