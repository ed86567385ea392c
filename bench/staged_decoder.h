/// A layer III decoder with a stopwatch between its stages.
#pragma once

#include "decoder/bitstream.h"
#include "decoder/kernels/kernel_table.h"
#include "decoder/layer3/hybrid.h"
#include "decoder/layer3/spectrum.h"
#include "decoder/layer3/stereo.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <optional>
#include <stdexcept>

enum Stage { kHeader, kFactors, kLines, kStereo, kHybrid, kTransform, kWindow, kDoubling, kStages };
inline constexpr const char* kStageNames[kStages] = {"header, side information, reservoir",
                                                     "scale factors, gains",
                                                     "Huffman codes with requantisation",
                                                     "joint stereo",
                                                     "reordering, alias reduction, IMDCT",
                                                     "32-point transform",
                                                     "window, rounding",
                                                     "doubling on delivery"};

using Nanoseconds = std::array<double, kStages>;
using StageClock = std::chrono::steady_clock;

/// Charges the time since the last lap to a stage.
class Stopwatch {
public:
    void Start() { last_ = StageClock::now(); }
    void Lap(Stage stage) {
        const StageClock::time_point now = StageClock::now();
        taken_[stage] += std::chrono::duration<double, std::nano>(now - last_).count();
        ++laps_[stage];
        last_ = now;
    }

    /// Without what the laps themselves take, of `lap` each.
    Nanoseconds Taken(double lap) const {
        Nanoseconds taken = {};
        for (std::size_t i = 0; i < kStages; ++i)
            taken[i] = std::max(taken_[i] - lap * laps_[i], 0.0);
        return taken;
    }

private:
    StageClock::time_point last_;
    Nanoseconds taken_ = {};
    std::array<int, kStages> laps_ = {};
};

/// Does what AMPDecoder does, its stages one by one.
class StagedDecoder : private trnmpa::AMPBitstream {
public:
    explicit StagedDecoder(IAMPBitsource& source) { SetSource(&source); }

    /// Decodes a frame to the front of `pcm` and gives the number of values; none behind the last frame.
    int DecodeFrame(Stopwatch& watch, std::int16_t* pcm) {
        watch.Start();
        const std::optional<trnmpa::DecoderHeader> header = ReadHeader();
        watch.Lap(kHeader);
        if (!header)
            return 0;
        const int values = trnmpa::kGranuleLines * header->channels;
        factors_[0] = factors_[1] = {};
        for (int granule = 0; granule < header->GranuleCount(); ++granule) {
            ReadGranule(*header, granule, watch);
            SynthesiseGranule(*header, granule, watch, pcm + granule * values);
        }
        return values * header->GranuleCount();
    }

    std::int32_t SampleRate() const { return sampleRate_; }
    int Channels() const { return channels_; }

private:
    std::optional<trnmpa::DecoderHeader> ReadHeader() {
        trnmpa::HeaderBytes bytes = {};
        if (!TryReadSource(bytes.data(), static_cast<int>(bytes.size())) ||
            !trnmpa::IsAcceptedHeader(bytes, nullptr))
            return std::nullopt;
        const trnmpa::DecoderHeader header = trnmpa::ParseHeader(bytes);
        if (header.layer != 3 || header.hasCrc != 0)
            throw std::runtime_error("frames of layer III without a checksum are wanted");
        std::array<std::uint8_t, trnmpa::SideInfo::kMaximumBytes> side = {};
        const int body = header.frameBytes - static_cast<int>(bytes.size()) - header.SideInfoBytes();
        ReadSource(side.data(), header.SideInfoBytes());
        info_ = trnmpa::ParseSideInfo(header, side);
        AppendToReservoir(body);
        RewindToFrameStart(static_cast<int>(info_.mainDataBegin) + body);
        sampleRate_ = header.sampleRate;
        channels_ = header.channels;
        return header;
    }

    void ReadGranule(const trnmpa::DecoderHeader& header, int granule, Stopwatch& watch) {
        for (int channel = 0; channel < header.channels; ++channel) {
            trnmpa::GranuleInfo& info = info_.granule[granule][channel];
            trnmpa::BitReader& reader = Reader();
            const int end = reader.Position() + static_cast<int>(info.part23Length);
            if (header.lowSamplingFrequency != 0)
                ReadScaleFactorsLsf(reader, header, channel, info, factors_[channel]);
            else
                ReadScaleFactorsMpeg1(reader, info, info_.scaleFactorSelection[channel], granule,
                                      factors_[channel]);
            const trnmpa::LineGains gains(info, LayoutOf(header, info), factors_[channel]);
            watch.Lap(kFactors);
            nonZeroCount_[channel] = ReadSpectrum(reader, header, info, gains, end, spectrum_[channel]);
            reader.SetPosition(end);
            watch.Lap(kLines);
        }
        if (header.channels == 2) {
            const trnmpa::GranuleInfo& right = info_.granule[granule][1];
            ProcessStereo(header, {right, LayoutOf(header, right), factors_[1]}, spectrum_[0], spectrum_[1],
                          nonZeroCount_);
            watch.Lap(kStereo);
        }
    }

    void SynthesiseGranule(const trnmpa::DecoderHeader& header, int granule, Stopwatch& watch,
                           std::int16_t* pcm) {
        const trnmpa::KernelTable& kernels = trnmpa::Kernels();
        for (int channel = 0; channel < header.channels; ++channel) {
            const trnmpa::GranuleInfo& info = info_.granule[granule][channel];
            SynthesiseHybrid(info, LayoutOf(header, info), nonZeroCount_[channel], spectrum_[channel],
                             hybrid_[channel], slots_[channel]);
        }
        watch.Lap(kHybrid);
        MakeRoom();
        const trnmpa::SynthesisRows rows[2] = {memory_[0].At(next_), memory_[1].At(next_)};
        kernels.transformSlots(slots_[0][0], header.channels, kSlots, true, rows);
        watch.Lap(kTransform);
        kernels.windowSlots(rows, header.channels, kSlots, pcm);
        next_ += kSlots;
        watch.Lap(kWindow);
        auto* bytes = reinterpret_cast<std::uint8_t*>(pcm);
        kernels.doubleSamples(bytes, static_cast<std::size_t>(trnmpa::kGranuleLines * header.channels),
                              bytes);
        watch.Lap(kDoubling);
    }

    void MakeRoom() {
        if (next_ + kSlots <= trnmpa::SynthesisMemory::kRows)
            return;
        const int first = next_ - trnmpa::kPastSlots;
        for (trnmpa::SynthesisMemory& memory : memory_) {
            std::memmove(memory.row, memory.row + first, trnmpa::kPastSlots * sizeof memory.row[0]);
            std::memmove(memory.centre, memory.centre + first, trnmpa::kPastSlots * sizeof memory.centre[0]);
        }
        next_ = trnmpa::kPastSlots;
    }

    static constexpr int kSlots = trnmpa::kLinesPerSubband;

    trnmpa::SideInfo info_;
    trnmpa::ScaleFactors factors_[2];
    float spectrum_[2][trnmpa::kGranuleLines] = {};
    int nonZeroCount_[2] = {};
    trnmpa::HybridMemory hybrid_[2];
    alignas(32) trnmpa::GranuleSlots slots_[2] = {};
    trnmpa::SynthesisMemory memory_[2];
    int next_ = trnmpa::kPastSlots;
    std::int32_t sampleRate_ = 0;
    int channels_ = 0;
};
