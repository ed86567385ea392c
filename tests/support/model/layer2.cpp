#include "support/model/layer2.h"

#include "support/model/bit_reader.h"
#include "support/model/tables.h"

#include <algorithm>
#include <cmath>

namespace test::model {

namespace {

double Multiplier(int scaleFactor) {
    return 2.0 * std::exp2(-scaleFactor / 3.0);
}

class Layer2Reader {
public:
    Layer2Reader(const Header& header, std::span<const std::uint8_t> body,
                 const std::vector<AllocationRow>& table, Layer2Body& out)
        : bits_(body), table_(table), out_(out), channels_(static_cast<std::size_t>(header.channels)),
          bound_(std::min(static_cast<std::size_t>(JointBound(header)), table.size())) {}

    void Read() {
        ReadAllocation();
        ReadScaleFactors();
        for (std::size_t granule = 0; granule < 12; ++granule)
            ReadGranule(granule);
        Scale();
    }

private:
    /// Channels with fields of their own in this subband.
    std::size_t Separate(std::size_t subband) const { return subband < bound_ ? channels_ : 1; }

    void ReadAllocation() {
        for (std::size_t subband = 0; subband < table_.size(); ++subband) {
            for (std::size_t channel = 0; channel < Separate(subband); ++channel)
                out_.levels[channel][subband] = table_[subband].levels.at(bits_.Read(table_[subband].bits));
            if (subband >= bound_)
                out_.levels[1][subband] = out_.levels[0][subband];
        }
    }

    void ReadScaleFactors() {
        for (std::size_t subband = 0; subband < table_.size(); ++subband)
            for (std::size_t channel = 0; channel < channels_; ++channel)
                if (out_.levels[channel][subband] != 0)
                    out_.scfsi[channel][subband] = bits_.ReadInt(2);
        for (std::size_t subband = 0; subband < table_.size(); ++subband)
            for (std::size_t channel = 0; channel < channels_; ++channel)
                if (out_.levels[channel][subband] != 0)
                    out_.scaleFactors[channel][subband] = ReadParts(out_.scfsi[channel][subband]);
    }

    std::array<int, 3> ReadParts(int selection) {
        const int first = bits_.ReadInt(6);
        if (selection == 2)
            return {first, first, first};
        const int second = bits_.ReadInt(6);
        if (selection == 1)
            return {first, first, second};
        if (selection == 3)
            return {first, second, second};
        return {first, second, bits_.ReadInt(6)};
    }

    void ReadGranule(std::size_t granule) {
        for (std::size_t subband = 0; subband < table_.size(); ++subband)
            for (std::size_t channel = 0; channel < channels_; ++channel) {
                const int levels = out_.levels[channel][subband];
                if (levels == 0)
                    continue;
                std::array<int, 3> values{};
                if (channel < Separate(subband))
                    values = ReadTriple(levels);
                else
                    for (std::size_t i = 0; i < 3; ++i)
                        values[i] = out_.quantised[0][3 * granule + i][subband];
                for (std::size_t i = 0; i < 3; ++i)
                    out_.quantised[channel][3 * granule + i][subband] = values[i];
            }
    }

    std::array<int, 3> ReadTriple(int levels) {
        const QuantisationClass& entry = StandardTables().quantisation.at(levels);
        std::array<int, 3> values{};
        if (!entry.grouped) {
            for (int& value : values)
                value = bits_.ReadInt(entry.bits) - ((1 << (entry.bits - 1)) - 1);
            return values;
        }
        int code = bits_.ReadInt(entry.bits);
        if (code == (1 << entry.bits) - 1)
            return {0, 0, 0};
        for (int& value : values) {
            value = code % levels - (levels - 1) / 2;
            code /= levels;
        }
        return values;
    }

    void Scale() {
        for (std::size_t row = 0; row < 36; ++row)
            for (std::size_t channel = 0; channel < channels_; ++channel)
                for (std::size_t subband = 0; subband < table_.size(); ++subband) {
                    const int levels = out_.levels[channel][subband];
                    if (levels == 0)
                        continue;
                    const int factor = out_.scaleFactors[channel][subband][row / 12];
                    out_.rows[row][channel][subband] =
                        out_.quantised[channel][row][subband] * (65534.0 / levels) * Multiplier(factor);
                }
    }

    BitReader bits_;
    const std::vector<AllocationRow>& table_;
    Layer2Body& out_;
    std::size_t channels_;
    std::size_t bound_;
};

} // namespace

std::string AllocationTableFor(const Header& header) {
    if (header.lsf)
        return "LSF";
    return StandardTables().allocationChoice.at({1, header.sampleRate, header.channels, header.bitrateIndex});
}

int JointBound(const Header& header) {
    return header.mode == kJointStereo ? 4 * header.modeExtension + 4 : 32;
}

Layer2Body DecodeLayer2(const Header& header, std::span<const std::uint8_t> body) {
    Layer2Body out;
    out.table = AllocationTableFor(header);
    out.rows.resize(36);
    const auto& tables = StandardTables().allocation;
    if (const auto table = tables.find(out.table); table != tables.end())
        Layer2Reader(header, body, table->second, out).Read();
    return out;
}

std::vector<SampleRow> DecodeLayer1(const Header& header, std::span<const std::uint8_t> body) {
    BitReader bits(body);
    const auto channels = static_cast<std::size_t>(header.channels);
    const auto bound = static_cast<std::size_t>(JointBound(header));
    std::array<std::array<int, 32>, 2> allocation{};
    std::array<std::array<double, 32>, 2> factors{};
    for (std::size_t subband = 0; subband < 32; ++subband) {
        for (std::size_t channel = 0; channel < (subband < bound ? channels : 1); ++channel)
            allocation[channel][subband] = bits.ReadInt(4);
        if (subband >= bound)
            allocation[1][subband] = allocation[0][subband];
    }
    for (std::size_t subband = 0; subband < 32; ++subband)
        for (std::size_t channel = 0; channel < channels; ++channel)
            if (const int code = allocation[channel][subband]; code != 0)
                factors[channel][subband] = Multiplier(bits.ReadInt(6)) * 65534.0 /
                                            StandardTables().classes[static_cast<std::size_t>(code)].levels;
    std::vector<SampleRow> rows(12);
    for (SampleRow& row : rows)
        for (std::size_t subband = 0; subband < 32; ++subband) {
            int value = 0;
            for (std::size_t channel = 0; channel < channels; ++channel) {
                const int code = allocation[channel][subband];
                if (code != 0 && (channel == 0 || subband < bound))
                    value = bits.ReadInt(code + 1) - ((1 << code) - 1);
                row[channel][subband] = code != 0 ? value * factors[channel][subband] : 0.0;
            }
        }
    return rows;
}

} // namespace test::model
