#include "mpatool/frame_check.h"

#include "decoder/bit_reader.h"
#include "decoder/frame_header.h"
#include "decoder/layer3/side_info.h"
#include "decoder/tables/layer2_tables.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

namespace mpatool {

namespace {

using trnmpa::DecoderHeader;
using Frame = std::span<const std::uint8_t>;

constexpr std::size_t kHeaderBytes = 4;
constexpr std::size_t kCrcBytes = 2;

/// The bytes behind header and CRC word that tell how a frame is made up, with zeros behind them.
class Head {
public:
    static constexpr std::size_t kBytes = 64;

    Head(Frame frame, std::size_t from) {
        from = std::min(from, frame.size());
        std::copy_n(frame.begin() + static_cast<std::ptrdiff_t>(from), std::min(kBytes, frame.size() - from),
                    bytes_.begin());
    }

    trnmpa::BitReader Bits() const { return {bytes_.data(), static_cast<int>(kBytes)}; }
    std::span<const std::uint8_t, trnmpa::SideInfo::kMaximumBytes> SideInfo() const {
        return std::span(bytes_).first<trnmpa::SideInfo::kMaximumBytes>();
    }

private:
    std::array<std::uint8_t, kBytes + trnmpa::BitReader::kZerosBehind> bytes_{};
};

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
    if (header.hasCrc == 0 || frame.size() < kHeaderBytes + kCrcBytes)
        return false;
    const Head head(frame, kHeaderBytes + kCrcBytes);
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
    if (frame.size() < kHeaderBytes)
        return faults;
    const DecoderHeader header = trnmpa::ParseHeader({frame[0], frame[1], frame[2], frame[3]});
    faults.hasWrongCrc = HasWrongCrc(header, frame);
    if (header.layer != 3)
        return faults;
    const std::size_t sideInfoStart = kHeaderBytes + (header.hasCrc != 0 ? kCrcBytes : 0);
    const trnmpa::SideInfo sideInfo = ParseSideInfo(header, Head(frame, sideInfoStart).SideInfo());
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
