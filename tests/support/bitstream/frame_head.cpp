#include "support/bitstream/frame_head.h"

#include "support/model/tables.h"

#include <stdexcept>

namespace test::bitstream {

namespace {

std::size_t At(int index) {
    return static_cast<std::size_t>(index);
}

void Check(const StreamOptions& options) {
    if (options.layer != 2 && options.layer != 3)
        throw std::invalid_argument("layer is not 2 or 3");
    if (options.sampleRateIndex < 0 || options.sampleRateIndex > 2)
        throw std::invalid_argument("sample rate index is not 0 to 2");
    if (options.mode < 0 || options.mode > 3)
        throw std::invalid_argument("mode is not 0 to 3");
    for (const int index : options.bitrateIndices)
        if (index < 1 || index > 14)
            throw std::invalid_argument("bit rate index is not 1 to 14");
    for (const int extension : options.modeExtensions)
        if (extension < 0 || extension > 3)
            throw std::invalid_argument("mode extension is not 0 to 3");
    for (const int table : options.layer3.tables)
        if (table < 0 || table > 31 || table == 4 || table == 14)
            throw std::invalid_argument("no such Huffman table");
    for (const BlockChoice& block : options.layer3.blocks)
        if (block.type < 0 || block.type > 3 || (block.mixed && block.type == 0))
            throw std::invalid_argument("no such block type");
}

} // namespace

HeaderMaker::HeaderMaker(const StreamOptions& options) : options_(options) {
    Check(options);
}

bool HeaderMaker::Pad(const model::Header& header, int remainder, Random& random) {
    switch (options_.padding) {
    case Padding::kNever:
        return false;
    case Padding::kAlways:
        return true;
    case Padding::kRandom:
        return random.Chance(50);
    case Padding::kByRate:
        break;
    }
    owed_ += remainder;
    if (owed_ < header.sampleRate)
        return false;
    owed_ -= header.sampleRate;
    return true;
}

model::Header HeaderMaker::Next(Random& random) {
    const model::Tables& tables = model::StandardTables();
    model::Header header;
    header.lsf = options_.version != Version::kMpeg1;
    header.mpeg25 = options_.version == Version::kMpeg25;
    header.layer = options_.layer;
    header.crc = options_.crc;
    header.bitrateIndex = random.Pick(options_.bitrateIndices);
    const auto& rates = header.layer == 2 ? tables.kbpsLayer2 : tables.kbpsLayer3;
    header.kbps = rates[header.lsf ? 1 : 0][At(header.bitrateIndex)];
    header.sampleRateIndex = options_.sampleRateIndex;
    header.sampleRate = tables.sampleRates[header.mpeg25 ? 2
                                           : header.lsf  ? 1
                                                         : 0][At(header.sampleRateIndex)];
    header.mode = options_.mode;
    header.modeExtension = random.Pick(options_.modeExtensions);
    header.channels = header.mode == model::kSingleChannel ? 1 : 2;

    // A frame lasts 1152 samples, 576 in layer III at the lower sampling frequencies.
    const int bytesTimesRate = (header.layer == 3 && header.lsf ? 72000 : 144000) * header.kbps;
    header.padding = Pad(header, bytesTimesRate % header.sampleRate, random);
    header.frameBytes = bytesTimesRate / header.sampleRate + (header.padding ? 1 : 0);
    return header;
}

HeaderBytes WriteHeader(const model::Header& header, const StreamOptions& options, Random& random) {
    const auto incidental = [&] { return options.incidentalBits && random.Chance(50); };
    BitWriter bits;
    bits.Write(0x7FF, 11);
    bits.Write(header.mpeg25 ? 0 : header.lsf ? 2 : 3, 2);
    bits.Write(4 - header.layer, 2);
    bits.WriteBit(!header.crc);
    bits.Write(header.bitrateIndex, 4);
    bits.Write(header.sampleRateIndex, 2);
    bits.WriteBit(header.padding);
    bits.WriteBit(incidental());
    bits.Write(header.mode, 2);
    bits.Write(header.modeExtension, 2);
    bits.WriteBit(incidental());
    bits.WriteBit(incidental());
    bits.Write(0, 2);
    const std::vector<std::uint8_t>& bytes = bits.Bytes();
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

std::uint16_t Crc(const HeaderBytes& header, std::span<const std::uint8_t> bytes, std::size_t protectedBits) {
    unsigned crc = 0xFFFF;
    const auto add = [&crc](unsigned byte, std::size_t bit) {
        const unsigned out = ((crc >> 15) ^ (byte >> (7 - bit))) & 1U;
        crc = ((crc << 1) ^ (out != 0 ? 0x8005U : 0U)) & 0xFFFFU;
    };
    for (std::size_t bit = 0; bit < 16; ++bit)
        add(header[2 + bit / 8], bit % 8);
    for (std::size_t bit = 0; bit < protectedBits; ++bit)
        add(bytes[bit / 8], bit % 8);
    return static_cast<std::uint16_t>(crc);
}

} // namespace test::bitstream
