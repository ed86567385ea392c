#include "mpatool/pcm/pcm_conversion.h"

#include "mpatool/output/tool_error.h"

#include <algorithm>
#include <limits>

namespace mpatool {

namespace {

constexpr std::int32_t kMode = 1;
constexpr std::int32_t kConverterBufferBytes = 262144;

/// Output samples that stand before the position: those at n / outputRate below position / rate.
std::int64_t SamplesBefore(std::int64_t position, std::int64_t rate, std::int64_t outputRate) {
    const std::int64_t seconds = position / rate;
    const std::int64_t rest = position % rate;
    if (seconds > std::numeric_limits<std::int64_t>::max() / outputRate - 1)
        throw ToolError("a stream of that length cannot be converted");
    return seconds * outputRate + (rest * outputRate + rate - 1) / rate;
}

} // namespace

SampleRange AtRate(const SampleRange& range, std::uint32_t rate, std::uint32_t outputRate) {
    return {SamplesBefore(range.begin, rate, outputRate), SamplesBefore(range.end, rate, outputRate)};
}

StretchConversion::StretchConversion(const PcmFormat& stream, const PcmFormat& output,
                                     const SampleRange& range, std::int64_t total)
    : stream_(stream), from_(ToWaveFormat(stream)), to_(ToWaveFormat(output)), range_(range),
      reach_(TRN_PCMBasicProcess::LookAheadSamples(from_, to_)), converter_(0, kConverterBufferBytes) {
    needed_ = {std::max<std::int64_t>(range.begin - reach_, 0),
               total - range.end > reach_ ? range.end + reach_ : total};
    position_ = needed_.begin;
}

std::size_t StretchConversion::Bytes(std::int64_t samples) const {
    return static_cast<std::size_t>(samples) * stream_.BytesPerSample();
}

std::int64_t StretchConversion::Held() const {
    return static_cast<std::int64_t>(held_.size() / stream_.BytesPerSample());
}

void StretchConversion::Drop(std::int64_t samples) {
    held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(Bytes(samples)));
    position_ += samples;
}

/// Primes the converter with what precedes the stretch.
void StretchConversion::Begin() {
    const std::int64_t before = range_.begin - position_;
    begun_ = true;
    if (converter_.SetResampleParater(held_.data(), static_cast<std::int32_t>(Bytes(before)), from_, to_,
                                      kMode, range_.begin) != 1)
        throw ToolError("this format of PCM cannot be converted");
    Drop(before);
}

void StretchConversion::Add(std::span<const std::uint8_t> pcm, const Consume& consume) {
    held_.insert(held_.end(), pcm.begin(), pcm.end());
    const std::int64_t heldEnd = position_ + Held();
    if (!begun_ && heldEnd >= range_.begin)
        Begin();
    const std::int64_t readyEnd =
        heldEnd == needed_.end ? range_.end : std::min(range_.end, heldEnd - reach_);
    const std::int64_t ready = readyEnd - position_;
    if (!begun_ || ready <= 0)
        return;
    const std::size_t bytes = Bytes(ready);
    std::uint8_t* converted = nullptr;
    std::int32_t length = 0;
    if (converter_.ReformatLPCM(from_, held_.data(), static_cast<std::int32_t>(bytes), to_, converted, length,
                                kMode, std::span<const std::uint8_t>(held_).subspan(bytes)) != 1)
        throw ToolError("this format of PCM cannot be converted");
    consume({converted, static_cast<std::size_t>(length)});
    Drop(ready);
}

} // namespace mpatool
