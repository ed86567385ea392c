#include "support/bitstream/layer2_writer.h"

#include "support/model/tables.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace test::bitstream {

namespace {

using Table = std::vector<model::AllocationRow>;

/// Null when the standard allows no table for this combination.
const Table* TableFor(const model::Header& header) {
    const model::Tables& tables = model::StandardTables();
    const int version = header.lsf ? 2 : 1;
    // The rates of MPEG 2.5 are in no list; all lower sampling frequencies share one table.
    const std::string name =
        header.lsf
            ? "LSF"
            : tables.allocationChoice.at({version, header.sampleRate, header.channels, header.bitrateIndex});
    const auto found = tables.allocation.find(name);
    return found == tables.allocation.end() ? nullptr : &found->second;
}

class Layer2Frame {
public:
    Layer2Frame(const Layer2Options& options, const model::Header& header, const Table& table, Random& random)
        : options_(options), table_(table), random_(random),
          channels_(static_cast<std::size_t>(header.channels)) {
        const std::size_t wanted =
            header.mode == model::kJointStereo ? 4 * static_cast<std::size_t>(header.modeExtension) + 4 : 32;
        bound_ = std::min(wanted, table.size());
    }

    void Choose(std::size_t bodyBits) {
        DrawAllocation();
        DrawSelection();
        while (TotalBits() > bodyBits)
            Reduce();
        DrawScaleFactors();
        DrawSamples();
    }

    /// `protectedBits` is set to the bits that the CRC covers, `headBits` to those before the samples.
    BitWriter Write(std::size_t& protectedBits, std::size_t& headBits) const;

    const Layer2Content& Content() const { return content_; }

private:
    std::size_t OwnChannels(std::size_t subband) const { return subband < bound_ ? channels_ : 1; }
    int Levels(std::size_t channel, std::size_t subband) const {
        return table_[subband].levels[codes_[subband < bound_ ? channel : 0][subband]];
    }
    void DrawAllocation();
    void DrawSelection();
    std::size_t TotalBits() const;
    void Reduce();
    void DrawScaleFactors();
    void DrawSamples();
    void WriteScaleFactors(BitWriter& bits) const;
    void WriteTriple(std::size_t channel, std::size_t subband, std::size_t first, BitWriter& bits) const;

    const Layer2Options& options_;
    const Table& table_;
    Random& random_;
    std::size_t channels_;
    std::size_t bound_ = 0;
    std::array<std::array<std::size_t, 32>, 2> codes_{};
    Layer2Content content_;
};

constexpr std::array<int, 4> kFactorsBySelection{3, 2, 1, 2};

void Layer2Frame::DrawAllocation() {
    for (std::size_t subband = 0; subband < table_.size(); ++subband)
        for (std::size_t channel = 0; channel < OwnChannels(subband); ++channel)
            if (random_.Chance(options_.allocatedPercent))
                codes_[channel][subband] =
                    static_cast<std::size_t>(random_.Below(static_cast<int>(table_[subband].levels.size())));
}

void Layer2Frame::DrawSelection() {
    for (std::size_t subband = 0; subband < table_.size(); ++subband)
        for (std::size_t channel = 0; channel < channels_; ++channel)
            content_.scfsi[channel][subband] = random_.Pick(options_.scfsi);
}

std::size_t Layer2Frame::TotalBits() const {
    int bits = 0;
    for (std::size_t subband = 0; subband < table_.size(); ++subband)
        for (std::size_t channel = 0; channel < channels_; ++channel) {
            const bool own = channel < OwnChannels(subband);
            bits += own ? table_[subband].bits : 0;
            const int levels = Levels(channel, subband);
            if (levels == 0)
                continue;
            const auto selection = static_cast<std::size_t>(content_.scfsi[channel][subband]);
            bits += 2 + 6 * kFactorsBySelection[selection];
            const model::QuantisationClass& entry = model::StandardTables().quantisation.at(levels);
            bits += own ? 12 * entry.bits * (entry.grouped ? 1 : 3) : 0;
        }
    return static_cast<std::size_t>(bits);
}

/// Lowers the allocation of one subband that has one.
void Layer2Frame::Reduce() {
    std::vector<std::size_t*> allocated;
    for (auto& channel : codes_)
        for (std::size_t& code : channel)
            if (code != 0)
                allocated.push_back(&code);
    if (allocated.empty())
        throw std::invalid_argument("the bit rate is too low for an empty layer II frame");
    --*random_.Pick(allocated);
}

void Layer2Frame::DrawScaleFactors() {
    int active = 0;
    for (std::size_t subband = 0; subband < table_.size(); ++subband)
        for (std::size_t channel = 0; channel < channels_; ++channel) {
            content_.levels[channel][subband] = Levels(channel, subband);
            active += Levels(channel, subband) != 0 ? 1 : 0;
        }
    // All subbands together stay below full scale nearly always.
    const int loudest = static_cast<int>(std::ceil(3.0 * std::log2(6.0 * std::sqrt(std::max(active, 1)))));
    const auto draw = [&] {
        return random_.Chance(1) ? random_.Below(63) : std::min(loudest + random_.Below(15), 62);
    };
    for (std::size_t channel = 0; channel < channels_; ++channel)
        for (std::size_t subband = 0; subband < table_.size(); ++subband) {
            auto& parts = content_.scaleFactors[channel][subband];
            int& selection = content_.scfsi[channel][subband];
            if (content_.levels[channel][subband] == 0) {
                selection = 0;
                continue;
            }
            parts = {draw(), draw(), draw()};
            if (selection == 1 || selection == 2)
                parts[1] = parts[0];
            if (selection == 2 || selection == 3)
                parts[2] = parts[1];
        }
}

void Layer2Frame::DrawSamples() {
    for (std::size_t subband = 0; subband < table_.size(); ++subband)
        for (std::size_t channel = 0; channel < channels_; ++channel) {
            if (channel >= OwnChannels(subband)) {
                content_.samples[channel][subband] = content_.samples[0][subband];
                continue;
            }
            const int levels = content_.levels[channel][subband];
            const int largest = levels == 0 ? 0 : (levels - 1) / 2;
            for (int& sample : content_.samples[channel][subband])
                sample = random_.Between(-largest, largest);
        }
}

void Layer2Frame::WriteScaleFactors(BitWriter& bits) const {
    for (std::size_t subband = 0; subband < table_.size(); ++subband)
        for (std::size_t channel = 0; channel < channels_; ++channel) {
            if (content_.levels[channel][subband] == 0)
                continue;
            const auto& parts = content_.scaleFactors[channel][subband];
            const int selection = content_.scfsi[channel][subband];
            bits.Write(parts[0], 6);
            if (selection == 0 || selection == 3)
                bits.Write(parts[1], 6);
            if (selection == 0 || selection == 1)
                bits.Write(parts[2], 6);
        }
}

void Layer2Frame::WriteTriple(std::size_t channel, std::size_t subband, std::size_t first,
                              BitWriter& bits) const {
    const int levels = content_.levels[channel][subband];
    const model::QuantisationClass& entry = model::StandardTables().quantisation.at(levels);
    const int* samples = &content_.samples[channel][subband][first];
    const int offset = (levels - 1) / 2;
    if (entry.grouped) {
        bits.Write(samples[0] + offset + levels * (samples[1] + offset + levels * (samples[2] + offset)),
                   entry.bits);
        return;
    }
    for (int i = 0; i < 3; ++i)
        bits.Write(samples[i] + offset, entry.bits);
}

BitWriter Layer2Frame::Write(std::size_t& protectedBits, std::size_t& headBits) const {
    BitWriter bits;
    for (std::size_t subband = 0; subband < table_.size(); ++subband)
        for (std::size_t channel = 0; channel < OwnChannels(subband); ++channel)
            bits.Write(static_cast<std::uint32_t>(codes_[channel][subband]), table_[subband].bits);
    for (std::size_t subband = 0; subband < table_.size(); ++subband)
        for (std::size_t channel = 0; channel < channels_; ++channel)
            if (content_.levels[channel][subband] != 0)
                bits.Write(content_.scfsi[channel][subband], 2);
    protectedBits = bits.Bits();
    WriteScaleFactors(bits);
    headBits = bits.Bits();
    for (std::size_t first = 0; first < 36; first += 3)
        for (std::size_t subband = 0; subband < table_.size(); ++subband)
            for (std::size_t channel = 0; channel < OwnChannels(subband); ++channel)
                if (content_.levels[channel][subband] != 0)
                    WriteTriple(channel, subband, first, bits);
    return bits;
}

} // namespace

void AddLayer2Frame(const StreamOptions& options, const model::Header& header, Random& random,
                    Stream& stream) {
    FrameRecord frame;
    frame.header = header;
    frame.offset = stream.bytes.size();
    frame.length = header.frameBytes;
    frame.kbps = header.kbps;
    const Table* table = TableFor(header);
    if (table == nullptr && !options.layer2.forbidden)
        throw std::invalid_argument("the standard has no allocation table for this combination");
    const auto bodyBytes = static_cast<std::size_t>(header.frameBytes - 4 - (header.crc ? 2 : 0));

    BitWriter body;
    std::size_t protectedBits = 0;
    std::size_t headBits = 0;
    if (table != nullptr) {
        Layer2Frame content(options.layer2, header, *table, random);
        content.Choose(8 * bodyBytes);
        body = content.Write(protectedBits, headBits);
        frame.layer2 = content.Content();
    }
    while (body.Bits() < 8 * bodyBytes)
        body.WriteBit(random.Chance(50));
    frame.sideInfoBytes = static_cast<int>((headBits + 7) / 8);

    const HeaderBytes head = WriteHeader(header, options, random);
    stream.bytes.insert(stream.bytes.end(), head.begin(), head.end());
    if (header.crc) {
        const std::uint16_t crc = Crc(head, body.Bytes(), protectedBits);
        stream.bytes.push_back(static_cast<std::uint8_t>(crc >> 8));
        stream.bytes.push_back(static_cast<std::uint8_t>(crc & 0xFF));
    }
    stream.bytes.insert(stream.bytes.end(), body.Bytes().begin(), body.Bytes().end());
    stream.frames.push_back(std::move(frame));
}

} // namespace test::bitstream
