#include "trnpcmprocenc/slice_resampler.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <numeric>

namespace pcm {

namespace {

/// Input samples that one skipping step passes at most; any value up to the factor above would do.
constexpr double kLongestSkip = 128.0;

} // namespace

bool RateGrid::Serves(std::uint32_t inputRate, std::uint32_t outputRate) {
    const std::uint64_t lower = std::min(inputRate, outputRate);
    return lower > 0 && std::max(inputRate, outputRate) <= lower * kLargestFactor;
}

RateGrid::RateGrid(std::uint32_t inputRate, std::uint32_t outputRate)
    : inputStep_(inputRate / std::gcd(inputRate, outputRate)),
      outputStep_(outputRate / std::gcd(inputRate, outputRate)) {}

// Whole input steps are split off first, so that no product leaves 64 bits.
std::int64_t RateGrid::SamplesBefore(std::int64_t position) const {
    const auto at = static_cast<std::uint64_t>(position);
    const std::uint64_t rest = at % inputStep_ * outputStep_;
    return static_cast<std::int64_t>(at / inputStep_ * outputStep_ + (rest + inputStep_ - 1) / inputStep_);
}

double RateGrid::DistanceToNext(std::int64_t position) const {
    const std::uint64_t rest = static_cast<std::uint64_t>(position) % inputStep_ * outputStep_ % inputStep_;
    const std::uint64_t missing = rest == 0 ? 0 : inputStep_ - rest;
    return static_cast<double>(missing) / static_cast<double>(outputStep_);
}

std::size_t SliceResampler::ReachSamples(std::uint32_t inputRate, std::uint32_t outputRate) {
    const std::uint64_t lower = std::min(inputRate, outputRate);
    return static_cast<std::size_t>((kReachAtLowerRate * inputRate + lower - 1) / lower);
}

SliceResampler::SliceResampler(std::size_t channels, std::uint32_t inputRate, std::uint32_t outputRate)
    : channels_(channels), reach_(ReachSamples(inputRate, outputRate)), grid_(inputRate, outputRate) {
    int error = 0;
    converter_.reset(src_new(SRC_SINC_BEST_QUALITY, static_cast<int>(channels), &error));
    if (converter_ == nullptr)
        throw std::bad_alloc();
}

void SliceResampler::Restart(std::int64_t position, std::span<const float> before) {
    before_.clear();
    Keep(before);
    position_ = position;
}

std::int64_t SliceResampler::OutputSamples(std::int64_t sliceSamples) const {
    return grid_.SamplesBefore(position_ + sliceSamples) - grid_.SamplesBefore(position_);
}

std::vector<float> SliceResampler::Convert(std::span<const float> slice, std::span<const float> behind) {
    window_.assign(before_.begin(), before_.end());
    // Skipping less than a sample may be finer than the library's ratios allow.
    if (window_.empty())
        window_.assign(channels_, 0.0F);
    const std::size_t inFront = window_.size() / channels_;
    window_.insert(window_.end(), slice.begin(), slice.end());
    const std::size_t given = std::min(behind.size() / channels_, reach_);
    window_.insert(window_.end(), behind.begin(),
                   behind.begin() + static_cast<std::ptrdiff_t>(given * channels_));
    AppendMirrored(reach_ - given);

    const std::int64_t samples = OutputSamples(static_cast<std::int64_t>(slice.size() / channels_));
    std::vector<float> output(static_cast<std::size_t>(samples) * channels_);
    std::span<const float> input = window_;
    if (src_reset(converter_.get()) != 0 ||
        !Skip(input, static_cast<double>(inFront) + grid_.DistanceToNext(position_)) ||
        !Process(input, output, grid_.Ratio()))
        output.clear();
    return output;
}

void SliceResampler::Advance(std::span<const float> slice) {
    Keep(slice);
    position_ += static_cast<std::int64_t>(slice.size() / channels_);
}

void SliceResampler::Keep(std::span<const float> samples) {
    const std::size_t most = reach_ * channels_;
    if (samples.size() > most)
        samples = samples.last(most);
    before_.insert(before_.end(), samples.begin(), samples.end());
    if (before_.size() > most)
        before_.erase(before_.begin(), before_.end() - static_cast<std::ptrdiff_t>(most));
}

/// Goes on behind the window with its end turned round the last sample, which keeps value and slope.
void SliceResampler::AppendMirrored(std::size_t samples) {
    const std::size_t last = window_.size() / channels_ - 1;
    window_.reserve(window_.size() + samples * channels_);
    for (std::size_t i = 1; i <= samples; ++i)
        for (std::size_t channel = 0; channel < channels_; ++channel) {
            const float mirrored = window_[(last - std::min(i, last)) * channels_ + channel];
            window_.push_back(2.0F * window_[last * channels_ + channel] - mirrored);
        }
}

/// Moves the converter on by any, also fractional, number of input samples from 1 up: the library's next
/// output sample stands behind the last one by the reciprocal of the ratio, so one output sample is taken for
/// each step.
bool SliceResampler::Skip(std::span<const float>& input, double inputSamples) {
    const int steps = static_cast<int>(std::ceil(inputSamples / kLongestSkip));
    std::vector<float> dropped(channels_);
    for (int step = 0; step < steps; ++step)
        if (!Process(input, dropped, steps / inputSamples))
            return false;
    return true;
}

/// Fills `output`, stepping over the input in steps of 1 / ratio.
bool SliceResampler::Process(std::span<const float>& input, std::span<float> output, double ratio) {
    if (src_set_ratio(converter_.get(), ratio) != 0)
        return false;
    while (!output.empty()) {
        SRC_DATA data{};
        data.data_in = input.data();
        data.data_out = output.data();
        data.input_frames = static_cast<long>(input.size() / channels_);
        data.output_frames = static_cast<long>(output.size() / channels_);
        data.end_of_input = 1;
        data.src_ratio = ratio;
        if (src_process(converter_.get(), &data) != 0 ||
            (data.output_frames_gen == 0 && data.input_frames_used == 0))
            return false;
        input = input.subspan(static_cast<std::size_t>(data.input_frames_used) * channels_);
        output = output.subspan(static_cast<std::size_t>(data.output_frames_gen) * channels_);
    }
    return true;
}

} // namespace pcm
