/// Stand-in for the library trnpcmprocenc: PCM formats and sample rates.
#pragma once

#include "os/wave_format.h"

#include <cstdint>
#include <memory>
#include <span>

/// Converts a stream of PCM, handed over slice by slice, to another format. One object serves one stream. Not
/// thread-safe.
///
/// Formats: tag 1 (PCM), 1 or 2 channels, packed little-endian samples of 8 (unsigned), 16, 24 or 32 (signed)
/// bits, any rate but 0; of a pair, the rates differ by a factor of 256 at most. nBlockAlign is the size of
/// such a sample of all channels, or 0 for just that. The other fields are not looked at.
///
/// Equal formats leave the bytes unchanged. Two channels become one as their mean, one becomes two as it is.
/// Fewer bits are rounded to the nearest value (halves upwards) and clamped; nothing is dithered. Another
/// rate is computed in single precision (24 bits) with a band-limiting filter that passes 97 per cent of the
/// narrower band.
///
/// How slices fit together when the rates differ. Samples per channel are numbered from the stream's start,
/// those of the output stand at the times n / output rate. A slice that holds the input samples [a, b) gives
/// exactly the output samples whose times lie in [a, b) / original rate, however the stream is sliced:
/// nothing drifts and nothing is delayed. An output sample depends on LookAheadSamples() input samples on
/// either side, so:
///   - what lies before a slice is remembered from the calls before; after a jump SetResampleParater
///     supplies it;
///   - what lies after it is the caller's to hand over as `lookAhead`.
/// With both, a slice's bytes do not depend on how the position was reached, nor on the slicing around it.
class TRN_PCMBasicProcess {
public:
    /// The arguments are the library's own; the stand-in ignores them.
    TRN_PCMBasicProcess(std::int32_t mode, std::int32_t bufferBytes);
    ~TRN_PCMBasicProcess();
    TRN_PCMBasicProcess(const TRN_PCMBasicProcess&) = delete;
    TRN_PCMBasicProcess& operator=(const TRN_PCMBasicProcess&) = delete;

    /// The most that LookAheadSamples gives.
    static constexpr std::int32_t kMostLookAheadSamples = 160 * 256;

    /// Samples per channel, at the original rate, that an output sample depends on before and behind it: 0
    /// when the rates are equal or a format is not served.
    static std::int32_t LookAheadSamples(const WAVEFORMATEX& original, const WAVEFORMATEX& output);

    /// Bytes that ReformatLPCM makes of `length` bytes, a whole number of samples, that begin with sample
    /// `position` of the stream; -1 when a format is not served, the slice reaches over position 2^53, or the
    /// result would have 2 GiB.
    static std::int64_t ConvertedBytes(const WAVEFORMATEX& original, const WAVEFORMATEX& output,
                                       std::int64_t position, std::int64_t length);

    /// Converts a slice of `length` bytes. `converted` and `convertedLength` (bytes) get the result, which
    /// the object keeps until the next call. `mode` is the library's own (1); the stand-in ignores it.
    ///
    /// The slice continues the one before it, or what SetResampleParater announced; with another pair of
    /// formats than before the stream starts afresh at sample 0, with silence before it.
    ///
    /// `lookAhead`, in the original format, is what the stream goes on with: LookAheadSamples() of it, fewer
    /// only where the stream ends; the next slice starts with it again. What is missing is guessed by
    /// mirroring the end of the slice at its last sample, which is harmless at the end of a stream and
    /// audible at every seam when it is never given. More than needed does no harm.
    ///
    /// 1 on success. 0, and nothing is touched, when a format is not served, `data` is null or `length` is no
    /// whole, positive number of samples, the result would have 2 GiB or memory runs out.
    std::int32_t ReformatLPCM(const WAVEFORMATEX& original, const std::uint8_t* data, std::int32_t length,
                              const WAVEFORMATEX& output, std::uint8_t*& converted,
                              std::int32_t& convertedLength, std::int32_t mode,
                              std::span<const std::uint8_t> lookAhead = {});

    /// Starts afresh behind a jump: `data`, `length` bytes in the original format, is what precedes the next
    /// slice, and `position` the number of that slice's first sample, counted per channel at the original
    /// rate. LookAheadSamples() of it (or all since the stream's start) make the next slices the bytes that
    /// reading through from the start gives; with less the first of them differ, and a `length` of 0 stands
    /// for silence.
    ///
    /// 1 on success. 0, and nothing is touched, when a format is not served, `length` is no whole number of
    /// samples or `position` is below 0 or above 2^53; 1, with nothing done, when the rates are equal.
    std::int32_t SetResampleParater(const std::uint8_t* data, std::int32_t length,
                                    const WAVEFORMATEX& original, const WAVEFORMATEX& output,
                                    std::int32_t mode, std::int64_t position = 0);

private:
    struct State;
    std::unique_ptr<State> state_;
};
