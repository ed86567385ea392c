// The plain C functions that read slices.

#include "plugin/c_paths.h"
#include "plugin/c_records.h"
#include "plugin/c_results.h"
#include "reader/slice_reader.h"
#include "reader/stream_format.h"

#include <memory>
#include <string>

struct trnmpa_slices {
    trnmpa::KwMpAudioReader engine;
};

namespace {

constexpr std::uint32_t kLargestRateRatio = 256;

bool IsServed(const trnmpa_slice_options& options) {
    const std::uint32_t bits = options.bits_per_sample;
    return options.slice_time >= 0 && options.channels <= 2 && bits % 8 == 0 && bits <= 32;
}

bool IsServed(std::uint64_t streamRate, std::uint64_t rate) {
    return rate <= streamRate * kLargestRateRatio && streamRate <= rate * kLargestRateRatio;
}

/// The format that `options` ask for; zeros, the engine's word for the stream's own, when they ask for none.
WAVEFORMATEX WantedFormat(const trnmpa_slice_options& options, const WAVEFORMATEX& original) {
    if (options.sample_rate == 0 && options.channels == 0 && options.bits_per_sample == 0)
        return {};
    const auto givenOr = [](std::uint32_t chosen, std::uint32_t own) { return chosen != 0 ? chosen : own; };
    return trnmpa::PcmFormat(
        static_cast<std::uint16_t>(givenOr(options.channels, original.nChannels)),
        givenOr(options.sample_rate, original.nSamplesPerSec),
        static_cast<std::uint16_t>(givenOr(options.bits_per_sample, original.wBitsPerSample)));
}

trnmpa_result OpenEngine(trnmpa::KwMpAudioReader& engine, const std::wstring& path,
                         const trnmpa_slice_options& options) {
    if (engine.Initialize() != 1)
        return TRNMPA_ERROR_MEMORY;
    if (engine.SetInputFile(path) != 1 || engine.StartRead() != 1 || !engine.HasMedia())
        return trnmpa::WhyNotOpened(path);
    if (options.slice_time != 0)
        engine.SetPerPcmFrameTime(options.slice_time);
    WAVEFORMATEX original = {};
    engine.GetOriginalStreamInfo(original);
    if (options.sample_rate != 0 && !IsServed(original.nSamplesPerSec, options.sample_rate))
        return TRNMPA_ERROR_UNSUPPORTED;
    engine.SetOutputFormat(WantedFormat(options, original));
    return TRNMPA_OK;
}

template <typename Unit>
trnmpa_result Open(const Unit* path, const trnmpa_slice_options* options, trnmpa_slices** slices) {
    if (slices == nullptr)
        return TRNMPA_ERROR_ARGUMENT;
    *slices = nullptr;
    if (path == nullptr || !trnmpa::IsUsableOrNull(options))
        return TRNMPA_ERROR_ARGUMENT;
    const trnmpa_slice_options wanted = options != nullptr ? *options : trnmpa_slice_options{};
    const bool isKnown = options == nullptr || trnmpa::AsksForNothingUnknown(*options);
    if (!isKnown || !IsServed(wanted))
        return TRNMPA_ERROR_UNSUPPORTED;
    const auto file = trnmpa::PathFrom(path);
    if (!file)
        return TRNMPA_ERROR_PATH;
    auto made = std::make_unique<trnmpa_slices>();
    const trnmpa_result result = OpenEngine(made->engine, *file, wanted);
    if (result == TRNMPA_OK)
        *slices = made.release();
    return result;
}

trnmpa_result Next(trnmpa::KwMpAudioReader& engine, trnmpa_slice& slice) {
    trnmpa::PcmSlice read;
    const std::int32_t result = engine.ReadFrame(read);
    slice.at_end = read.atEnd ? 1 : 0;
    slice.data = read.length > 0 ? read.data : nullptr;
    slice.bytes = slice.data != nullptr ? static_cast<std::uint32_t>(read.length) : 0;
    slice.sample_rate = read.format.nSamplesPerSec;
    slice.channels = read.format.nChannels;
    slice.bits_per_sample = read.format.wBitsPerSample;
    if (read.atEnd)
        return TRNMPA_END;
    return result == 1 ? TRNMPA_OK : TRNMPA_ERROR_DECODE;
}

} // namespace

trnmpa_result trnmpa_slices_open_utf8(const char* path, const trnmpa_slice_options* options,
                                      trnmpa_slices** slices) noexcept {
    return trnmpa::Answer([&] { return Open(path, options, slices); });
}

trnmpa_result trnmpa_slices_open_utf16(const uint16_t* path, const trnmpa_slice_options* options,
                                       trnmpa_slices** slices) noexcept {
    return trnmpa::Answer([&] { return Open(path, options, slices); });
}

trnmpa_result trnmpa_slices_seek(trnmpa_slices* slices, uint32_t number) noexcept {
    if (slices == nullptr)
        return TRNMPA_ERROR_ARGUMENT;
    slices->engine.SeekTo(number);
    return TRNMPA_OK;
}

trnmpa_result trnmpa_slices_next(trnmpa_slices* slices, trnmpa_slice* slice) noexcept {
    if (slices == nullptr || !trnmpa::IsUsable(slice))
        return TRNMPA_ERROR_ARGUMENT;
    trnmpa_slice read = {};
    const trnmpa_result result = trnmpa::Answer([&] { return Next(slices->engine, read); });
    trnmpa::Give(slice, read);
    return result;
}

void trnmpa_slices_close(trnmpa_slices* slices) noexcept {
    delete slices;
}
