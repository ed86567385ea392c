#include "trnpcmprocenc/pcm_basic_process.h"

#include "trnpcmprocenc/pcm_samples.h"
#include "trnpcmprocenc/slice_resampler.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <exception>
#include <optional>
#include <vector>

namespace pcm {

namespace {

std::optional<Conversion> UnderstandPair(const WAVEFORMATEX& original, const WAVEFORMATEX& output) {
    const std::optional<Format> from = Understand(original);
    const std::optional<Format> to = Understand(output);
    if (!from || !to || !RateGrid::Serves(from->rate, to->rate))
        return std::nullopt;
    return Conversion{*from, *to};
}

/// Nothing when the bytes are no whole number of samples.
std::optional<Bytes> WholeSamples(const std::uint8_t* data, std::int32_t length, const Format& format) {
    if (length < 0 || static_cast<std::size_t>(length) % format.BlockBytes() != 0 ||
        (length > 0 && data == nullptr))
        return std::nullopt;
    return Bytes(data, static_cast<std::size_t>(length));
}

} // namespace

} // namespace pcm

static_assert(TRN_PCMBasicProcess::kMostLookAheadSamples ==
              pcm::SliceResampler::kReachAtLowerRate * pcm::RateGrid::kLargestFactor);

struct TRN_PCMBasicProcess::State {
    /// The formats that the resampler stands for.
    std::optional<pcm::Conversion> conversion;
    std::optional<pcm::SliceResampler> resampler;
    std::vector<std::uint8_t> converted;

    bool Convert(pcm::Bytes data, const pcm::Conversion& wanted, pcm::Bytes lookAhead);
    bool Resample(pcm::Bytes data, pcm::Bytes lookAhead);
    void StartAfresh(const pcm::Conversion& wanted);
};

bool TRN_PCMBasicProcess::State::Convert(pcm::Bytes data, const pcm::Conversion& wanted,
                                         pcm::Bytes lookAhead) {
    if (wanted.ChangesRate()) {
        if (conversion != wanted)
            StartAfresh(wanted);
        return Resample(data, lookAhead);
    }
    if (data.size() / wanted.original.BlockBytes() * wanted.output.BlockBytes() > INT_MAX)
        return false;
    converted =
        wanted.original == wanted.output ? std::vector(data.begin(), data.end()) : pcm::Repack(data, wanted);
    conversion.reset();
    return true;
}

bool TRN_PCMBasicProcess::State::Resample(pcm::Bytes data, pcm::Bytes lookAhead) {
    const pcm::Format& from = conversion->original;
    const pcm::Format& to = conversion->output;
    const auto samples = static_cast<std::int64_t>(data.size() / from.BlockBytes());
    const auto mostOutput = static_cast<std::int64_t>(INT_MAX / to.BlockBytes());
    if (resampler->Position() > pcm::RateGrid::kMaximumPosition - samples ||
        resampler->OutputSamples(samples) > mostOutput)
        return false;
    const std::size_t channels = conversion->ResampledChannels();
    const std::size_t reach = pcm::SliceResampler::ReachSamples(from.rate, to.rate) * from.BlockBytes();
    const std::vector<float> slice = pcm::ToFloat(data, from, channels);
    const std::vector<float> behind =
        pcm::ToFloat(lookAhead.first(std::min(lookAhead.size(), reach)), from, channels);
    const std::vector<float> output = resampler->Convert(slice, behind);
    if (output.empty() && resampler->OutputSamples(samples) > 0)
        return false;
    converted = pcm::FromFloat(output, channels, to);
    resampler->Advance(slice);
    return true;
}

void TRN_PCMBasicProcess::State::StartAfresh(const pcm::Conversion& wanted) {
    const std::size_t channels = wanted.ResampledChannels();
    conversion.reset();
    resampler.emplace(channels, wanted.original.rate, wanted.output.rate);
    conversion = wanted;
}

TRN_PCMBasicProcess::TRN_PCMBasicProcess(std::int32_t, std::int32_t) : state_(std::make_unique<State>()) {}

TRN_PCMBasicProcess::~TRN_PCMBasicProcess() = default;

std::int32_t TRN_PCMBasicProcess::LookAheadSamples(const WAVEFORMATEX& original, const WAVEFORMATEX& output) {
    const std::optional<pcm::Conversion> conversion = pcm::UnderstandPair(original, output);
    if (!conversion || !conversion->ChangesRate())
        return 0;
    return static_cast<std::int32_t>(
        pcm::SliceResampler::ReachSamples(conversion->original.rate, conversion->output.rate));
}

std::int64_t TRN_PCMBasicProcess::ConvertedBytes(const WAVEFORMATEX& original, const WAVEFORMATEX& output,
                                                 std::int64_t position, std::int64_t length) {
    const std::optional<pcm::Conversion> conversion = pcm::UnderstandPair(original, output);
    if (!conversion || position < 0 || length < 0)
        return -1;
    const auto block = static_cast<std::int64_t>(conversion->original.BlockBytes());
    std::int64_t samples = length / block;
    if (length % block != 0 || position > pcm::RateGrid::kMaximumPosition - samples)
        return -1;
    if (conversion->ChangesRate()) {
        const pcm::RateGrid grid(conversion->original.rate, conversion->output.rate);
        samples = grid.SamplesBefore(position + samples) - grid.SamplesBefore(position);
    }
    const auto most = static_cast<std::int64_t>(INT_MAX / conversion->output.BlockBytes());
    return samples <= most ? samples * static_cast<std::int64_t>(conversion->output.BlockBytes()) : -1;
}

std::int32_t TRN_PCMBasicProcess::ReformatLPCM(const WAVEFORMATEX& original, const std::uint8_t* data,
                                               std::int32_t length, const WAVEFORMATEX& output,
                                               std::uint8_t*& converted, std::int32_t& convertedLength,
                                               std::int32_t, std::span<const std::uint8_t> lookAhead) {
    try {
        const std::optional<pcm::Conversion> conversion = pcm::UnderstandPair(original, output);
        if (!conversion || length <= 0)
            return 0;
        const std::optional<pcm::Bytes> slice = pcm::WholeSamples(data, length, conversion->original);
        if (!slice || !state_->Convert(*slice, *conversion, lookAhead))
            return 0;
    } catch (const std::exception&) {
        return 0;
    }
    converted = state_->converted.data();
    convertedLength = static_cast<std::int32_t>(state_->converted.size());
    return 1;
}

std::int32_t TRN_PCMBasicProcess::SetResampleParater(const std::uint8_t* data, std::int32_t length,
                                                     const WAVEFORMATEX& original, const WAVEFORMATEX& output,
                                                     std::int32_t, std::int64_t position) {
    try {
        const std::optional<pcm::Conversion> conversion = pcm::UnderstandPair(original, output);
        if (!conversion || position < 0 || position > pcm::RateGrid::kMaximumPosition)
            return 0;
        const std::optional<pcm::Bytes> before = pcm::WholeSamples(data, length, conversion->original);
        if (!before)
            return 0;
        if (!conversion->ChangesRate())
            return 1;
        const std::size_t channels = conversion->ResampledChannels();
        const std::size_t reach = static_cast<std::size_t>(LookAheadSamples(original, output));
        const std::size_t used = std::min(before->size(), reach * conversion->original.BlockBytes());
        const std::vector<float> samples = pcm::ToFloat(before->last(used), conversion->original, channels);
        if (state_->conversion != conversion)
            state_->StartAfresh(*conversion);
        state_->resampler->Restart(position, samples);
    } catch (const std::exception&) {
        return 0;
    }
    return 1;
}
