/// The rules about headers and tags, the searches and the probe, on any bytes.
#include "harness/media.h"

#include "mpa/file_probe.h"
#include "mpa/first_frame_search.h"
#include "mpa/frame_walk.h"
#include "mpa/id3v2_tag.h"
#include "mpa/stream_start.h"

namespace {

using namespace trnmpa;
using fuzz::Require;

/// The input as a file would give it.
class MemorySource final : public HeaderSource {
public:
    explicit MemorySource(fuzz::View bytes) : bytes_(bytes) {}

    std::size_t Read(std::span<std::uint8_t> destination) override {
        const auto start = std::min(static_cast<std::uint64_t>(position_), std::uint64_t{bytes_.size()});
        const fuzz::View rest = bytes_.subspan(static_cast<std::size_t>(start));
        const fuzz::View read = rest.first(std::min(rest.size(), destination.size()));
        std::copy(read.begin(), read.end(), destination.begin());
        position_ += static_cast<std::int64_t>(read.size());
        return read.size();
    }
    std::int64_t Position() override { return position_; }
    bool SetPosition(std::int64_t position) override {
        if (position >= 0)
            position_ = position;
        return position >= 0;
    }

private:
    fuzz::View bytes_;
    std::int64_t position_ = 0;
};

void CheckHeader(const FrameHeaderBytes& bytes, const FrameHeaderBytes& other) {
    Require(SameCbrHeader(bytes, bytes), "a header matches itself");
    Require(SameCbrHeader(bytes, other) == SameCbrHeader(other, bytes), "the match has no direction");
    MpaFrameHeader header;
    DecodeFrameHeader(bytes, header);
    if (!IsValidFrameHeader(bytes))
        return;
    Require(header.layer == 2 || header.layer == 3, "layer I is refused");
    Require(header.frameBytes >= 24 && header.frameBytes <= kMaximumFrameBytes, "frame length");
    Require(header.sampleRate >= 8000 && header.sampleRate <= 48000, "sample rate");
    const MpaFrameInfo info = FillFrameInfo(header);
    Require(info.pcmBytesPerFrame == SamplesPerFrame(info.layer, info.version) * header.channels * 2,
            "PCM bytes");
    Require(DecoderFrameBytes(header) >= header.frameBytes, "the decoder's length");
}

void CheckFirstFrame(fuzz::View bytes) {
    MemorySource source(bytes);
    MpaFrameHeader header;
    if (!FindFirstFrame(source, header))
        return;
    Require(header.firstFrameOffset >= 0, "first frame before the data");
    const auto offset = static_cast<std::size_t>(header.firstFrameOffset);
    Require(offset + kFrameHeaderBytes <= bytes.size(), "first frame behind the data");
    Require(source.Position() == header.firstFrameOffset + 4, "position behind the header");
    FrameHeaderBytes found = {};
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(offset), found.size(), found.begin());
    Require(IsValidFrameHeader(found), "first frame has no header");
}

void CheckTags(fuzz::View bytes) {
    MemorySource source(bytes);
    std::int64_t offset = -1;
    const bool served = SkipId3v2Tag(source, offset);
    Require(offset >= 0 && (!served || offset < (1 << 28) + 10), "end of the tag");
    for (const TagSizeBits bits : {TagSizeBits::kSeven, TagSizeBits::kEight})
        if (SkipTagAndPadding(source, offset, bits) && offset != 0)
            Require(offset < std::ssize(bytes) && bytes[static_cast<std::size_t>(offset)] == 0xFF,
                    "end of the padding");
}

void CheckWalk(fuzz::View bytes) {
    MemorySource source(bytes);
    const auto start = LocateAudioStart(source);
    FrameWalk walk = start ? FrameWalk(source, start->dataStart, start->firstHeader) : FrameWalk(source, 0);
    std::int64_t end = start ? start->dataStart : 0;
    while (const auto frame = walk.Next()) {
        Require(frame->offset >= end, "frames overlap");
        Require(frame->frameBytes > 0 && frame->samplesPerFrame > 0, "empty frame");
        end = frame->offset + frame->frameBytes;
        Require(end <= std::ssize(bytes), "frame behind the data");
    }
}

void CheckProbe(fuzz::View bytes) {
    const fuzz::Media media(bytes);
    CMPGAudioFileBufferReader probe;
    for (int i = 0; i < 2; ++i) {
        const std::int32_t result =
            fuzz::Watched("probe", media.WorkFor(), [&] { return probe.ParseFile(media.Path()); });
        Require(result >= 0 && result <= 2, "the probe's result");
        TRN_MEDIA_INFO2 info;
        Require(probe.ToMediaInfo2(&info) == 1, "conversion");
        Require(info.fileSize == std::ssize(bytes), "file size");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::View bytes(data, size);
    const fuzz::Work work{size, 0, 0};
    FrameHeaderBytes last = {};
    for (std::size_t i = 0; i + 4 <= size; ++i) {
        const FrameHeaderBytes header = {data[i], data[i + 1], data[i + 2], data[i + 3]};
        CheckHeader(header, last);
        last = header;
    }
    fuzz::Watched("first frame", work, [&] { CheckFirstFrame(bytes); });
    fuzz::Watched("tags", work, [&] { CheckTags(bytes); });
    fuzz::Watched("walk", work, [&] { CheckWalk(bytes); });
    CheckProbe(bytes);
    return 0;
}
