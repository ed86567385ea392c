// How slices are read, in order and after a jump.

#include "reader/frame_agreement.h"
#include "reader/slice_reader.h"
#include "reader/slice_times.h"

#include <algorithm>
#include <limits>

namespace trnmpa {

namespace {

/// Slices that are read and dropped before the one that a jump leads to.
constexpr std::int64_t kSettlingSlices = 3;
constexpr std::int64_t kLargestSliceBytes = std::numeric_limits<std::int32_t>::max();
/// Far behind the end of any stream.
constexpr std::int64_t kLargestPosition = std::int64_t{1} << 60;

} // namespace

/// Everything that divides or multiplies below has been checked here.
bool KwMpAudioReader::CanRead() const {
    const bool hasFrames = stream_.isReady && stream_.layout.frame.pcmBytes > 0 &&
                           (index_ == nullptr || !stream_.frameTable.empty());
    if (!hasFrames)
        return false;
    const auto start = PcmBytesBeforeSlice(stream_.requestedSlice, sliceTime_, stream_.format);
    const auto end =
        PcmBytesBeforeSlice(std::int64_t{stream_.requestedSlice} + 1, sliceTime_, stream_.format);
    return start && end && *end <= kLargestPosition && *end - *start <= kLargestSliceBytes;
}

std::int64_t KwMpAudioReader::BytesBefore(std::int64_t slice) const {
    return PcmBytesBeforeSlice(slice, sliceTime_, stream_.format).value_or(0);
}

std::int32_t KwMpAudioReader::ReadFrame(PcmSlice& slice) {
    slice = {};
    std::int32_t result = 0;
    if (CanRead())
        result = ReadRequested(slice);
    else
        stream_.knowsPlace = false;
    // The number after the last is 0 again, and what is read there does not go on from here.
    stream_.currentSlice = ++stream_.requestedSlice;
    stream_.knowsPlace &= stream_.currentSlice != 0;
    return result;
}

/// Reads the requested slice and gives the result; the slice stays empty when the decoder throws.
std::int32_t KwMpAudioReader::ReadRequested(PcmSlice& slice) {
    const std::int64_t requested = stream_.requestedSlice;
    const bool jumps = stream_.currentSlice != stream_.requestedSlice || !stream_.knowsPlace;
    stream_.knowsPlace = false;
    stream_.slicesBefore = false;
    stream_.metEnd = false;
    try {
        if (jumps)
            SeekAndPrime(AnchorSlice(requested), requested);
        const bool delivered = ReadSlice(requested, slice);
        stream_.knowsPlace = true;
        return delivered ? 1 : 0;
    } catch (int code) {
        // At the end of the data reading on gives the end again, wherever a computed place might lead.
        stream_.metEnd = code == AMP_ERR_END_OF_STREAM;
        stream_.knowsPlace = stream_.metEnd;
        slice.atEnd = stream_.metEnd;
    } catch (...) {
    }
    // What does not fill a slice belongs to none.
    stream_.queue.Clear();
    // The result of the slices that were read on the way stands, except at the end.
    return stream_.slicesBefore && !slice.atEnd ? 1 : 0;
}

/// Where reading begins on the way to a slice: far enough back for the decoder to settle and for the
/// resampler to be primed.
std::int64_t KwMpAudioReader::AnchorSlice(std::int64_t slice) const {
    std::int64_t anchor = std::max<std::int64_t>(slice - kSettlingSlices, 0);
    const auto primed = static_cast<std::int64_t>(LookAheadBytes());
    const std::int64_t target = BytesBefore(slice);
    for (std::int64_t step = 1; anchor > 0 && target - BytesBefore(anchor) < primed; step *= 2)
        anchor -= std::min(anchor, step);
    return anchor;
}

/// Stands before `slice`, with what lies between it and `anchor` decoded and passed over.
void KwMpAudioReader::SeekAndPrime(std::int64_t anchor, std::int64_t slice) {
    const std::int64_t start = BytesBefore(anchor) + stream_.startSkip * stream_.format.nBlockAlign;
    const std::int64_t pcmBytes = stream_.layout.frame.pcmBytes;
    SeekToFrame(start / pcmBytes);
    FillQueue(static_cast<std::size_t>(pcmBytes));
    stream_.queue.Drop(static_cast<std::size_t>(start % pcmBytes));
    if (anchor < slice) {
        PassOver(BytesBefore(anchor + 1) - BytesBefore(anchor));
        stream_.slicesBefore = true;
        PassOver(BytesBefore(slice) - BytesBefore(anchor + 1));
    }
}

/// A frame at a time: slices may be long.
void KwMpAudioReader::PassOver(std::int64_t bytes) {
    while (bytes > 0) {
        FillQueue(1);
        const auto step = std::min<std::int64_t>(bytes, static_cast<std::int64_t>(stream_.queue.Size()));
        stream_.queue.Drop(static_cast<std::size_t>(step));
        bytes -= step;
    }
}

/// Stands before `frame` with decoder and source, the bit reservoir and the filter bank filled; the queue is
/// empty. Throws the decoder's end of stream for a frame outside the file.
void KwMpAudioReader::SeekToFrame(std::int64_t frame) {
    stream_.queue.Clear();
    stream_.postponed.reset();
    stream_.startDrop = 0;
    Preroll preroll;
    const std::int64_t start = PrerollStartOf(frame, preroll);
    const auto offset = FrameOffset(start);
    if (!offset || *offset > frames_->Length()) {
        // Whatever length the file had or gets, nothing more is read.
        frames_->MoveTo(kLargestPosition);
        throw static_cast<int>(AMP_ERR_END_OF_STREAM);
    }
    frames_->JumpTo(AgreeingPlace(*offset), start);
    for (std::int64_t i = start; i < frame; ++i) {
        if (i >= frame - preroll.decodedFrames)
            frames_->Decode(stream_.layout.frame, framePcm_.data());
        else
            frames_->Skip(stream_.layout.frame);
    }
}

/// A place that leads to a frame of another format, as a stale index or an estimate may, is taken back by
/// half a frame.
std::int64_t KwMpAudioReader::AgreeingPlace(std::int64_t offset) const {
    const AMPFrameInfo& frame = stream_.layout.frame;
    if (FramesAgree(frames_->DescribeFrameAt(offset), frame))
        return offset;
    return std::max<std::int64_t>(offset - frame.frameBytes / 2, 0);
}

std::int64_t KwMpAudioReader::PrerollStartOf(std::int64_t frame, Preroll& preroll) const {
    const AMPFrameInfo& stream = stream_.layout.frame;
    if (frame < static_cast<std::int64_t>(stream_.frameTable.size()))
        return PrerollStart(stream, stream_.frameTable, frame, preroll);
    preroll = PrerollFor(stream, stream.frameBytes);
    return PrerollStart(stream, preroll, frame);
}

/// Behind the last entry of an index the place is computed, from numbers that an index route leaves at 0.
std::optional<std::int64_t> KwMpAudioReader::FrameOffset(std::int64_t frame) const {
    if (frame < static_cast<std::int64_t>(stream_.frameTable.size()))
        return stream_.frameTable[static_cast<std::size_t>(frame)].frameOffset;
    return ComputedFrameOffset(stream_.layout, frame);
}

void KwMpAudioReader::FillQueue(std::size_t bytes) {
    while (stream_.queue.Size() < bytes) {
        if (stream_.postponed)
            throw *stream_.postponed;
        DecodeToQueue();
    }
}

/// As FillQueue; what the decoder throws is thrown when the bytes are really wanted.
void KwMpAudioReader::LookAhead(std::size_t bytes) {
    try {
        FillQueue(bytes);
    } catch (int code) {
        stream_.postponed = code;
    }
}

void KwMpAudioReader::DecodeToQueue() {
    frames_->Decode(stream_.layout.frame, framePcm_.data());
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(framePcm_.data());
    const auto size = static_cast<std::size_t>(stream_.layout.frame.pcmBytes);
    const std::size_t dropped = std::min(stream_.startDrop, size);
    stream_.startDrop -= dropped;
    stream_.queue.Append({bytes + dropped, size - dropped});
}

std::size_t KwMpAudioReader::LookAheadBytes() const {
    if (!HasOutputFormat())
        return 0;
    const std::int32_t samples = TRN_PCMBasicProcess::LookAheadSamples(stream_.format, outputFormat_);
    return static_cast<std::size_t>(std::max(samples, 0)) * stream_.format.nBlockAlign;
}

bool KwMpAudioReader::HasOutputFormat() const {
    const WAVEFORMATEX& format = outputFormat_;
    return format.wFormatTag != 0 || format.nChannels != 0 || format.nSamplesPerSec != 0 ||
           format.nAvgBytesPerSec != 0 || format.nBlockAlign != 0 || format.wBitsPerSample != 0;
}

} // namespace trnmpa
