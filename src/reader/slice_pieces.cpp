// How one slice is put together: decoded, converted and amplified piece by piece, so that besides the slice
// itself no more is held than a piece needs, however long the slice is.

#include "reader/pcm_gain.h"
#include "reader/slice_reader.h"

#include <algorithm>
#include <cstring>

namespace trnmpa {

namespace {

/// Slices of usual lengths are one piece.
constexpr std::int64_t kMostPieceBytes = 256 * 1024;

/// More than a file of that length can decode to, or than a slice may have: no frame has fewer than 24 bytes
/// (8 kbit/s at 24000 Hz).
std::int64_t PcmBytesBound(std::int64_t fileBytes) {
    constexpr std::int64_t kLeastFrameBytes = 24;
    constexpr std::int64_t kLongEnough = std::int64_t{1} << 40;
    constexpr std::int64_t kMostPcmBytes = std::int64_t{kMaximumFramePcmValues} * sizeof(std::int16_t);
    return (std::min(fileBytes, kLongEnough) / kLeastFrameBytes + 1) * kMostPcmBytes;
}

} // namespace

/// False, with an empty result, when the slice cannot be had in the output format; the stream then goes on
/// behind it all the same. Throws what the decoder throws.
bool KwMpAudioReader::ReadSlice(std::int64_t slice, PcmSlice& result) {
    const std::int64_t first = BytesBefore(slice);
    const std::int64_t bytes = BytesBefore(slice + 1) - first;
    const auto wanted = ResultBytes(first, bytes);
    std::uint8_t* const room = wanted ? result_.Require(std::max<std::size_t>(*wanted, 1)) : nullptr;
    const bool isHalved = stream_.layout.frame.layer == 3;
    const WAVEFORMATEX& format = HasOutputFormat() ? outputFormat_ : stream_.format;
    bool isServed = wanted.has_value();
    std::size_t filled = 0;
    for (std::int64_t done = 0; done < bytes;) {
        const auto piece = static_cast<std::size_t>(std::min(bytes - done, PieceBytes()));
        FillQueue(piece);
        LookAhead(piece + LookAheadBytes());
        const std::span<const std::uint8_t> decoded = stream_.queue.Take(piece);
        if (isServed && done == 0)
            PlaceConverter(first, piece);
        const std::span<const std::uint8_t> pcm = isServed ? Convert(decoded) : decoded;
        isServed = isServed && pcm.data() != nullptr && pcm.size() <= *wanted - filled;
        if (isServed && isHalved)
            DoubleAmplitude(pcm, format.wBitsPerSample, room + filled);
        else if (isServed)
            std::memcpy(room + filled, pcm.data(), pcm.size());
        filled += isServed ? pcm.size() : 0;
        done += static_cast<std::int64_t>(piece);
    }
    result.format = format;
    if (!isServed)
        return false;
    result.data = filled > 0 ? room : nullptr;
    result.length = static_cast<std::int32_t>(filled);
    return true;
}

/// Of a slice of `bytes` behind `position` in the decoded stream; nothing when the output format is not
/// served, the result would be too large, or the file too short for it, whatever an index says of its format.
std::optional<std::size_t> KwMpAudioReader::ResultBytes(std::int64_t position, std::int64_t bytes) const {
    if (bytes > PcmBytesBound(frames_->Length()))
        return std::nullopt;
    if (!HasOutputFormat() || bytes == 0)
        return static_cast<std::size_t>(bytes);
    const std::int64_t block = stream_.format.nBlockAlign;
    const std::int64_t converted =
        TRN_PCMBasicProcess::ConvertedBytes(stream_.format, outputFormat_, position / block, bytes);
    if (converted < 0)
        return std::nullopt;
    return static_cast<std::size_t>(converted);
}

/// Whole samples; fewer where the conversion makes many of one.
std::int64_t KwMpAudioReader::PieceBytes() const {
    const std::int64_t block = stream_.format.nBlockAlign;
    std::int64_t samples = kMostPieceBytes / block;
    if (HasOutputFormat() && outputFormat_.nSamplesPerSec > stream_.format.nSamplesPerSec)
        samples = samples * stream_.format.nSamplesPerSec / outputFormat_.nSamplesPerSec;
    return std::max<std::int64_t>(samples, 1) * block;
}

/// Tells the converter what precedes the slice, which it need not have seen: there may have been a jump,
/// another format or one that is not served. The slice's first piece has been taken.
void KwMpAudioReader::PlaceConverter(std::int64_t position, std::size_t pieceBytes) {
    const std::size_t needed = std::min(LookAheadBytes(), static_cast<std::size_t>(position));
    if (LookAheadBytes() == 0)
        return;
    const auto taken = stream_.queue.Taken(needed + pieceBytes);
    const auto before = taken.first(taken.size() - std::min(pieceBytes, taken.size()));
    converter_->SetResampleParater(before.data(), static_cast<std::int32_t>(before.size()), stream_.format,
                                   outputFormat_, 1, position / stream_.format.nBlockAlign);
}

/// The piece in the format of the slices; without data when that fails.
std::span<const std::uint8_t> KwMpAudioReader::Convert(std::span<const std::uint8_t> piece) {
    if (!HasOutputFormat())
        return piece;
    static constexpr std::uint8_t kNothing = 0;
    std::uint8_t* converted = nullptr;
    std::int32_t length = 0;
    const std::span<std::uint8_t> waiting = stream_.queue.Waiting();
    if (converter_->ReformatLPCM(stream_.format, piece.data(), static_cast<std::int32_t>(piece.size()),
                                 outputFormat_, converted, length, 1,
                                 waiting.first(std::min(waiting.size(), LookAheadBytes()))) == 0)
        return {};
    // No sample of the output need stand in a short piece.
    return {length > 0 ? converted : &kNothing, static_cast<std::size_t>(length)};
}

} // namespace trnmpa
