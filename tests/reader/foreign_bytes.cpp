#include "reader/foreign_bytes.h"

#include "reader/reader_streams.h"

#include <algorithm>
#include <iterator>

namespace test {

namespace {

using bitstream::FrameRecord;
using bitstream::Stream;

constexpr std::size_t kMostJunk = 4096;

/// Writes a file part by part and keeps account of its frames.
class FileWriter {
public:
    void Add(const Bytes& bytes) { file_.bytes.insert(file_.bytes.end(), bytes.begin(), bytes.end()); }

    void AddFrame(FrameRecord record, const Bytes& bytes) {
        record.offset = file_.bytes.size();
        file_.frames.push_back(std::move(record));
        Add(bytes);
    }

    Stream Take() { return std::move(file_); }

private:
    Stream file_;
};

Bytes BytesOf(const Stream& stream, const FrameRecord& frame) {
    const auto begin = stream.bytes.begin() + static_cast<std::ptrdiff_t>(frame.offset);
    return Bytes(begin, begin + frame.length);
}

/// The frame that an encoder puts first; without its text where that does not fit.
Bytes EncodersFrame(const Stream& stream) {
    constexpr int kWithText = 40;
    return DescribingFrame(stream, stream.frames.front().length < kWithText ? "" : "Info");
}

/// None, a little or as much as a search passes over.
std::size_t DrawJunkLength(std::mt19937_64& random, bool inFours) {
    std::size_t length = 0;
    switch (random() % 12) {
    case 0:
        length = kMostJunk;
        break;
    case 1:
        length = 4 + random() % 600;
        break;
    case 2:
    case 3:
        length = 1 + random() % 8;
        break;
    default:
        break;
    }
    return inFours ? (length + 3) / 4 * 4 : length;
}

} // namespace

Bytes Junk(std::size_t count, std::mt19937_64& random, bool withFF) {
    constexpr unsigned kFF = 0xFF;
    constexpr unsigned kSyncSecond = 0xE0;
    Bytes junk(count);
    unsigned previous = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const bool isFF = withFF && previous != kFF && i + 1 < count && random() % 4 == 0;
        const auto other = static_cast<unsigned>(random() % (previous == kFF ? kSyncSecond : kFF));
        previous = isFF ? kFF : other;
        junk[i] = static_cast<std::uint8_t>(previous);
    }
    return junk;
}

Bytes TagLookingLikeFrames(std::size_t bodyBytes, std::mt19937_64& random) {
    Bytes tag = {'I', 'D', '3', 3, 0, 0};
    for (int shift = 21; shift >= 0; shift -= 7)
        tag.push_back(static_cast<std::uint8_t>(bodyBytes >> shift & 0x7F));
    constexpr std::uint8_t kHeader[] = {0xFF, 0xFB, 0x90, 0x00};
    for (std::size_t i = 0; i < bodyBytes; ++i)
        tag.push_back(i % 64 < 4 ? kHeader[i % 64] : static_cast<std::uint8_t>(random()));
    return tag;
}

Stream Surround(const Stream& stream, const Surroundings& surroundings) {
    std::mt19937_64 random(surroundings.seed);
    const bool isMpeg25 = stream.frames.front().header.mpeg25;
    FileWriter file;
    if (surroundings.tag)
        file.Add(TagLookingLikeFrames(700 + random() % 700, random));
    if (surroundings.junk)
        file.Add(Junk(DrawJunkLength(random, isMpeg25), random, !isMpeg25));
    if (surroundings.infoFrame)
        file.AddFrame(stream.frames.front(), EncodersFrame(stream));
    for (const FrameRecord& frame : stream.frames) {
        file.AddFrame(frame, BytesOf(stream, frame));
        if (surroundings.junk)
            file.Add(Junk(DrawJunkLength(random, isMpeg25), random, !isMpeg25));
    }
    if (surroundings.junk)
        file.Add(Junk(2 * kMostJunk, random, !isMpeg25));
    return file.Take();
}

Stream WithBytesBefore(const Stream& stream, std::size_t frame, const Bytes& bytes) {
    FileWriter file;
    for (std::size_t i = 0; i < stream.frames.size(); ++i) {
        if (i == frame)
            file.Add(bytes);
        file.AddFrame(stream.frames[i], BytesOf(stream, stream.frames[i]));
    }
    return file.Take();
}

Bytes FramesAlone(const Stream& stream, std::size_t first) {
    Bytes frames;
    for (std::size_t i = first; i < stream.frames.size(); ++i)
        std::ranges::copy(BytesOf(stream, stream.frames[i]), std::back_inserter(frames));
    return frames;
}

} // namespace test
