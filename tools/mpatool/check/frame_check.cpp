#include "mpatool/check/frame_check.h"

#include "decoder/tables/layer2_tables.h"
#include "mpatool/stream/frame_head.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace mpatool {

namespace {

using trnmpa::DecoderHeader;
using Frame = std::span<const std::uint8_t>;
using Head = FrameHead;

/// CRC-16 of ISO/IEC 11172-3, 2.4.3.1.
class Crc {
public:
    void Add(trnmpa::BitReader bits, int count) {
        constexpr unsigned kPolynomial = 0x8005;
        for (; count > 0; --count) {
            const unsigned out = (value_ >> 15 ^ bits.Get(1)) & 1;
            value_ = (value_ << 1 ^ (out != 0 ? kPolynomial : 0)) & 0xFFFF;
        }
    }
    unsigned Value() const { return value_; }

private:
    unsigned value_ = 0xFFFF;
};

std::optional<int> AllocationTable(const DecoderHeader& header) {
    constexpr int kLsfTable = 4;
    if (header.lowSamplingFrequency != 0)
        return kLsfTable;
    const std::int8_t table =
        trnmpa::tables::kAllocationTable[header.channels - 1][header.sampleRateIndex][header.bitRateIndex];
    return table >= 0 ? std::optional(int{table}) : std::nullopt;
}

/// Bits of allocation and scale-factor selection (2.4.1.6).
std::optional<int> Layer2ProtectedBits(const DecoderHeader& header, trnmpa::BitReader bits) {
    namespace tables = trnmpa::tables;
    const auto table = AllocationTable(header);
    if (!table)
        return std::nullopt;
    int selectionBits = 0;
    int subband = 0;
    for (int group = 0; group < 4; ++group)
        for (int i = 0; i < tables::kAllocationGroupSubbands[*table][group]; ++i, ++subband) {
            const int fields = subband < header.JointStereoBound() ? header.channels : 1;
            for (int field = 0; field < fields; ++field) {
                const auto code = bits.Get(tables::kAllocationGroupBits[*table][group]);
                const bool hasSamples = tables::kAllocationClass[*table][group][code] != 0;
                selectionBits += hasSamples ? 2 * header.channels / fields : 0;
            }
        }
    return bits.Position() + selectionBits;
}

bool HasWrongCrc(const DecoderHeader& header, Frame frame) {
    if (header.hasCrc == 0 || frame.size() < Head::kHeaderBytes + Head::kCrcBytes)
        return false;
    const Head head(frame, Head::kHeaderBytes + Head::kCrcBytes);
    const auto bits = header.layer == 2 ? Layer2ProtectedBits(header, head.Bits())
                                        : std::optional(8 * header.SideInfoBytes());
    if (!bits)
        return false;
    Crc crc;
    crc.Add(Head(frame, 2).Bits(), 16);
    crc.Add(head.Bits(), *bits);
    return crc.Value() != (unsigned{frame[4]} << 8 | frame[5]);
}

std::int64_t MainDataBits(const DecoderHeader& header, const trnmpa::SideInfo& sideInfo) {
    std::int64_t bits = 0;
    for (int granule = 0; granule < header.GranuleCount(); ++granule)
        for (int channel = 0; channel < header.channels; ++channel)
            bits += sideInfo.granule[granule][channel].part23Length;
    return bits;
}

} // namespace

FrameFaults FrameCheck::Check(Frame frame) {
    FrameFaults faults;
    if (frame.size() < Head::kHeaderBytes)
        return faults;
    const DecoderHeader header = trnmpa::ParseHeader({frame[0], frame[1], frame[2], frame[3]});
    faults.hasWrongCrc = HasWrongCrc(header, frame);
    if (header.layer != 3)
        return faults;
    const std::size_t sideInfoStart = SideInfoStart(header);
    const trnmpa::SideInfo sideInfo = SideInfoOf(header, frame);
    const std::int64_t ownBytes = static_cast<std::int64_t>(frame.size()) -
                                  static_cast<std::int64_t>(sideInfoStart) - header.SideInfoBytes();
    const auto back = static_cast<std::int64_t>(sideInfo.mainDataBegin);
    const std::int64_t end = (MainDataBits(header, sideInfo) + 7) / 8 - back;
    faults.missingBytes = static_cast<std::int32_t>(std::max<std::int64_t>(back - unusedBytes_, 0));
    faults.excessBytes = static_cast<std::int32_t>(std::max<std::int64_t>(end - ownBytes, 0));
    unusedBytes_ = std::max<std::int64_t>(ownBytes - end, 0);
    return faults;
}

} // namespace mpatool
