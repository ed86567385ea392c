#include "plugin/c_reader_info.h"

#include "mpa/file_probe.h"

#include <algorithm>
#include <cmath>

namespace trnmpa {

namespace {

constexpr double kUnitsPerSecond = 10'000'000;
/// Below it a double is exact, and nothing computed from it leaves 64 bits.
constexpr double kLargestLength = 1LL << 53;

/// Frames of one bit rate differ by a byte of padding at most.
std::uint32_t BitRateKindOf(std::span<const MpaIndexEntry> entries) {
    if (entries.empty())
        return TRNMPA_BIT_RATE_UNKNOWN;
    const auto [shortest, longest] = std::ranges::minmax(entries, {}, &MpaIndexEntry::frameBytes);
    return longest.frameBytes - shortest.frameBytes <= 1 ? TRNMPA_BIT_RATE_CONSTANT
                                                         : TRNMPA_BIT_RATE_VARIABLE;
}

void DescribeByIndex(const KwMpAudioReader2& engine, trnmpa_info& info) {
    info.has_index = 1;
    info.bit_rate_kind = BitRateKindOf(engine.IndexEntries());
    const std::int64_t frameBytes = engine.Frame().pcmBytes;
    if (info.block_bytes == 0 || frameBytes <= 0)
        return;
    info.length_kind = TRNMPA_LENGTH_INDEX;
    info.length = static_cast<std::int64_t>(engine.IndexEntries().size()) * frameBytes / info.block_bytes;
}

void DescribeByProbe(const std::wstring& path, trnmpa_info& info) {
    CMPGAudioFileBufferReader probe;
    const std::int32_t result = probe.ParseFile(path);
    if (result == kProbeVariableBitRate)
        info.bit_rate_kind = TRNMPA_BIT_RATE_VARIABLE;
    if (result != kProbeDescribed)
        return;
    info.bit_rate_kind = TRNMPA_BIT_RATE_CONSTANT;
    const double samples =
        std::round(static_cast<double>(probe.Description().duration) / kUnitsPerSecond * info.sample_rate);
    if (samples < 0 || samples > kLargestLength)
        return;
    info.length_kind = TRNMPA_LENGTH_ESTIMATE;
    info.length = static_cast<std::int64_t>(samples);
}

std::int64_t DurationOf(const trnmpa_info& info) {
    const double units = static_cast<double>(info.length) * kUnitsPerSecond / std::max(info.sample_rate, 1u);
    const bool isKnown = info.length >= 0 && info.sample_rate != 0 && units < 9e18;
    return isKnown ? static_cast<std::int64_t>(std::round(units)) : -1;
}

} // namespace

trnmpa_info Describe(const KwMpAudioReader2& engine, const std::wstring& path) {
    const WAVEFORMATEX& format = engine.Format();
    trnmpa_info info = {};
    info.struct_size = sizeof info;
    info.layer = engine.Frame().layer;
    info.mpeg_version = engine.Frame().version;
    info.sample_rate = format.nSamplesPerSec;
    info.channels = format.nChannels;
    info.bits_per_sample = format.wBitsPerSample;
    info.block_bytes = format.nBlockAlign;
    info.bit_rate = static_cast<std::uint32_t>(engine.Frame().bitRate);
    info.delay = static_cast<std::uint32_t>(engine.Delay());
    info.length = -1;
    if (engine.HasIndex())
        DescribeByIndex(engine, info);
    else
        DescribeByProbe(path, info);
    info.duration = DurationOf(info);
    return info;
}

} // namespace trnmpa
