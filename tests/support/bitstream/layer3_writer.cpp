#include "support/bitstream/layer3_writer.h"

#include <algorithm>

namespace test::bitstream {

namespace {

void WriteGranuleInfo(const model::GranuleInfo& info, bool lsf, BitWriter& bits) {
    bits.Write(info.part23Length, 12);
    bits.Write(info.bigValues, 9);
    bits.Write(info.globalGain, 8);
    bits.Write(info.scalefacCompress, lsf ? 9 : 4);
    bits.WriteBit(info.windowSwitching);
    if (info.windowSwitching) {
        bits.Write(info.blockType, 2);
        bits.WriteBit(info.mixed);
        bits.Write(info.tableSelect[0], 5);
        bits.Write(info.tableSelect[1], 5);
        for (const int gain : info.subblockGain)
            bits.Write(gain, 3);
    } else {
        for (const int table : info.tableSelect)
            bits.Write(table, 5);
        bits.Write(info.region0Count, 4);
        bits.Write(info.region1Count, 3);
    }
    if (!lsf)
        bits.WriteBit(info.preflag);
    bits.WriteBit(info.scalefacScale);
    bits.Write(info.count1Table, 1);
}

/// ISO/IEC 11172-3 and 13818-3, clause 2.4.1.7.
BitWriter WriteSideInfo(const FrameRecord& frame) {
    const bool lsf = frame.header.lsf;
    const auto channels = static_cast<std::size_t>(frame.header.channels);
    BitWriter bits;
    bits.Write(frame.sideInfo.mainDataBegin, lsf ? 8 : 9);
    bits.Write(frame.sideInfo.privateBits, lsf ? (channels == 1 ? 1 : 2) : (channels == 1 ? 5 : 3));
    if (!lsf)
        for (std::size_t channel = 0; channel < channels; ++channel)
            for (const bool keep : frame.sideInfo.scfsi[channel])
                bits.WriteBit(keep);
    for (std::size_t granule = 0; granule < (lsf ? 1U : 2U); ++granule)
        for (std::size_t channel = 0; channel < channels; ++channel)
            WriteGranuleInfo(frame.sideInfo.granules[granule][channel], lsf, bits);
    return bits;
}

void FillUp(std::vector<std::uint8_t>& bytes, std::size_t size, Random& random) {
    while (bytes.size() < size)
        bytes.push_back(random.Byte());
}

} // namespace

std::size_t Layer3Writer::BytesToUse(std::size_t available, std::size_t mostBack, Random& random) const {
    std::size_t leave = 0;
    if (options_.layer3.reservoir == ReservoirUse::kFull)
        leave = std::min(mostBack, available * 15 / 16);
    if (options_.layer3.reservoir == ReservoirUse::kRandom)
        leave = static_cast<std::size_t>(random.Below(static_cast<int>(std::min(mostBack, available)) + 1));
    return (available - leave) * static_cast<std::size_t>(options_.layer3.fillPercent) / 100;
}

BlockChoice Layer3Writer::DrawBlock(std::size_t channel, const BlockChoice& left, Random& random) {
    const Layer3Options& options = options_.layer3;
    if (channel == 1 && (options.sameBlocksInBothChannels || options.blocksInTurn))
        return left;
    return options.blocksInTurn ? options.blocks.at(blockTurn_++ % options.blocks.size())
                                : random.Pick(options.blocks);
}

void Layer3Writer::ChooseScfsi(FrameRecord& frame, const std::array<std::array<BlockChoice, 2>, 2>& blocks,
                               Random& random) const {
    const Layer3Options& options = options_.layer3;
    for (std::size_t channel = 0; channel < static_cast<std::size_t>(frame.header.channels); ++channel) {
        const bool anyShort = blocks[0][channel].type == 2 || blocks[1][channel].type == 2;
        if (frame.header.lsf || (anyShort && !options.scfsiOverShortBlocks))
            continue;
        const int pattern = options.scfsi == kAny ? random.Below(16) : options.scfsi;
        for (std::size_t group = 0; group < 4; ++group)
            frame.sideInfo.scfsi[channel][group] = ((pattern >> (3 - group)) & 1) != 0;
    }
}

void Layer3Writer::ChooseFrame(FrameRecord& frame, std::size_t bits, BitWriter& mainData, Random& random) {
    const auto granules = static_cast<std::size_t>(frame.header.Granules());
    const auto channels = static_cast<std::size_t>(frame.header.channels);
    std::array<std::array<BlockChoice, 2>, 2> blocks{};
    for (std::size_t granule = 0; granule < granules; ++granule)
        for (std::size_t channel = 0; channel < channels; ++channel)
            blocks[granule][channel] = DrawBlock(channel, blocks[granule][0], random);
    ChooseScfsi(frame, blocks, random);

    std::size_t shares = granules * channels;
    for (std::size_t granule = 0; granule < granules; ++granule)
        for (std::size_t channel = 0; channel < channels; ++channel, --shares) {
            const std::size_t left = bits - mainData.Bits();
            const auto percent = static_cast<std::size_t>(random.Between(70, 130));
            const std::size_t budget = shares == 1 ? left : left / shares * percent / 100;
            const GranulePlace place{frame.header, static_cast<int>(granule), static_cast<int>(channel),
                                     frame.sideInfo.scfsi[channel], &frame.granules[0][channel].scaleFactors};
            const GranuleChoice choice =
                ChooseGranule(options_.layer3, place, blocks[granule][channel], budget, random);
            frame.sideInfo.granules[granule][channel] = choice.info;
            frame.granules[granule][channel] = choice.content;
            mainData.Append(choice.bits);
        }
}

void Layer3Writer::Add(const model::Header& header, Random& random) {
    FrameRecord frame;
    frame.header = header;
    frame.length = header.frameBytes;
    frame.kbps = header.kbps;
    frame.sideInfoBytes = header.SideInfoBytes();
    const auto slot =
        static_cast<std::size_t>(header.frameBytes - 4 - (header.crc ? 2 : 0) - header.SideInfoBytes());
    const std::size_t mostBack = options_.layer3.reservoir == ReservoirUse::kNone ? 0
                                 : header.lsf                                     ? 255
                                                                                  : 511;
    FillUp(mainData_, slotStart_ > mostBack ? slotStart_ - mostBack : 0, random);

    const std::size_t back = slotStart_ - mainData_.size();
    frame.mainDataBegin = static_cast<int>(back);
    frame.sideInfo.mainDataBegin = frame.mainDataBegin;
    if (options_.incidentalBits)
        frame.sideInfo.privateBits = random.Below(header.lsf ? 2 : 8);
    BitWriter mainData;
    ChooseFrame(frame, 8 * BytesToUse(back + slot, mostBack, random), mainData, random);
    frame.mainDataBytes = static_cast<int>(mainData.Bytes().size());
    mainData_.insert(mainData_.end(), mainData.Bytes().begin(), mainData.Bytes().end());
    slotStart_ += slot;

    headers_.push_back(WriteHeader(header, options_, random));
    frames_.push_back(std::move(frame));
}

Stream Layer3Writer::Finish(Random& random) {
    FillUp(mainData_, slotStart_, random);
    Stream stream;
    auto mainData = mainData_.cbegin();
    for (std::size_t i = 0; i < frames_.size(); ++i) {
        FrameRecord& frame = frames_[i];
        frame.offset = stream.bytes.size();
        const BitWriter sideInfo = WriteSideInfo(frame);
        BitWriter head;
        for (const std::uint8_t byte : headers_[i])
            head.Write(byte, 8);
        if (frame.header.crc)
            head.Write(Crc(headers_[i], sideInfo.Bytes(), sideInfo.Bits()), 16);
        head.Append(sideInfo);
        stream.bytes.insert(stream.bytes.end(), head.Bytes().begin(), head.Bytes().end());
        const auto end = mainData + (frame.length - static_cast<std::ptrdiff_t>(head.Bytes().size()));
        stream.bytes.insert(stream.bytes.end(), mainData, end);
        mainData = end;
    }
    stream.frames = std::move(frames_);
    return stream;
}

} // namespace test::bitstream
