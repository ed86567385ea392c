/// A stretch of a stream in another PCM format.
#pragma once

#include "mpatool/pcm/wave_writer.h"
#include "trnpcmprocenc/pcm_basic_process.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace mpatool {

/// Samples per channel, from the start of the stream, end excluded.
struct SampleRange {
    std::int64_t begin = 0;
    std::int64_t end = 0;

    std::int64_t Samples() const { return end - begin; }
};

/// The stretch at the output rate: the samples whose times lie in `range`. Neighbouring stretches fit
/// together without a gap.
SampleRange AtRate(const SampleRange& range, std::uint32_t rate, std::uint32_t outputRate);

/// Converts one stretch of a stream, so that it is the same stretch of the whole stream converted.
class StretchConversion {
public:
    using Consume = std::function<void(std::span<const std::uint8_t>)>;

    /// The stream has `total` samples.
    StretchConversion(const PcmFormat& stream, const PcmFormat& output, const SampleRange& range,
                      std::int64_t total);

    /// What is to be handed over: the stretch and, at another rate, its surroundings.
    const SampleRange& Needed() const { return needed_; }

    /// Takes the next PCM of that and hands out what can be converted by now. Throws ToolError.
    void Add(std::span<const std::uint8_t> pcm, const Consume& consume);

private:
    std::size_t Bytes(std::int64_t samples) const;
    std::int64_t Held() const;
    void Begin();
    void Drop(std::int64_t samples);

    PcmFormat stream_;
    WAVEFORMATEX from_;
    WAVEFORMATEX to_;
    SampleRange range_;
    SampleRange needed_;
    std::int64_t reach_;
    TRN_PCMBasicProcess converter_;
    bool begun_ = false;
    std::int64_t position_; ///< of the first sample that is held
    std::vector<std::uint8_t> held_;
};

} // namespace mpatool
