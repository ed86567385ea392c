/// Another sample rate for a stream that comes in slices, on a time grid that the slicing does not move.
#pragma once

#include <samplerate.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace pcm {

/// The grid of output samples over the input: output n stands at the input time n * inputRate / outputRate.
class RateGrid {
public:
    /// Positions up to this one can be computed with.
    static constexpr std::int64_t kMaximumPosition = std::int64_t{1} << 53;

    /// The most by which the library lets rates differ.
    static constexpr std::uint32_t kLargestFactor = 256;

    /// Whether the rates differ by a factor that is served.
    static bool Serves(std::uint32_t inputRate, std::uint32_t outputRate);

    RateGrid(std::uint32_t inputRate, std::uint32_t outputRate);

    /// Output samples per input sample.
    double Ratio() const { return static_cast<double>(outputStep_) / static_cast<double>(inputStep_); }

    /// How many output samples stand before the input position: the number of the first one at or behind it.
    std::int64_t SamplesBefore(std::int64_t position) const;

    /// From the input position to the first output sample at or behind it, in input samples.
    double DistanceToNext(std::int64_t position) const;

private:
    /// The rates without their common factor.
    std::uint64_t inputStep_;
    std::uint64_t outputStep_;
};

/// Resamples slices of interleaved samples. Each is computed from the samples around it, with a filter state
/// of its own, so that the result depends on these samples and the position alone.
class SliceResampler {
public:
    /// Half the length of the library's best filter is 144 samples of the lower rate; a few more for its
    /// rounding.
    static constexpr std::uint64_t kReachAtLowerRate = 160;

    /// Input samples on either side that an output sample depends on.
    static std::size_t ReachSamples(std::uint32_t inputRate, std::uint32_t outputRate);

    /// Stands at position 0 with silence before it. The rates must be served. Throws std::bad_alloc.
    SliceResampler(std::size_t channels, std::uint32_t inputRate, std::uint32_t outputRate);

    /// Goes to `position` (samples per channel), with `before` in front of it and silence further back.
    void Restart(std::int64_t position, std::span<const float> before);

    /// The output samples that stand within `slice`, at the position; `behind` is what follows it. Gives
    /// nothing when the library fails. The position stays.
    std::vector<float> Convert(std::span<const float> slice, std::span<const float> behind);

    /// Output samples per channel that Convert gives for a slice of so many input samples per channel.
    std::int64_t OutputSamples(std::int64_t sliceSamples) const;

    /// Moves the position behind `slice`.
    void Advance(std::span<const float> slice);

    std::int64_t Position() const { return position_; }

private:
    struct Delete {
        void operator()(SRC_STATE* state) const { src_delete(state); }
    };

    void Keep(std::span<const float> samples);
    void AppendMirrored(std::size_t samples);
    bool Skip(std::span<const float>& input, double inputSamples);
    bool Process(std::span<const float>& input, std::span<float> output, double ratio);

    std::size_t channels_;
    std::size_t reach_;
    RateGrid grid_;
    std::unique_ptr<SRC_STATE, Delete> converter_;
    std::int64_t position_ = 0;
    /// What precedes the position: as much as the filter reaches, or all there is.
    std::vector<float> before_;
    /// What the slice at hand is computed from; kept for its memory.
    std::vector<float> window_;
};

} // namespace pcm
