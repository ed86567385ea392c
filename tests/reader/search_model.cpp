#include "reader/search_model.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace test {

namespace {

constexpr std::size_t kSearchLimit = 4096;

std::optional<model::HeaderBytes> FourAt(const Bytes& file, std::size_t offset) {
    if (file.size() < 4 || offset > file.size() - 4)
        return std::nullopt;
    return model::HeaderBytes{file[offset], file[offset + 1], file[offset + 2], file[offset + 3]};
}

/// Nothing when the file has no byte 0xFF behind its tag or the tag claims too much.
std::optional<std::size_t> BehindTag(const Bytes& file) {
    const auto four = FourAt(file, 0);
    const auto letter = [&](std::size_t i) { return (*four)[i] & ~0x20; };
    if (!four || letter(0) != 'I' || letter(1) != 'D' || (*four)[2] != '3')
        return 0;
    std::size_t size = 0;
    for (std::size_t i = 6; i < 10; ++i)
        size = size << 7 | (i < file.size() ? file[i] & 0x7Fu : 0u);
    for (std::size_t i = size + 10; i < file.size(); ++i)
        if (file[i] == 0xFF)
            return i;
    return std::nullopt;
}

/// This search asks for twelve bits of a sync word where it steps.
std::size_t AnalysisStep(const model::HeaderBytes& b) {
    if (b[1] == 0xFF && b[2] >= 0xF0)
        return 1;
    if (b[2] == 0xFF && b[3] >= 0xF0)
        return 2;
    return b[3] == 0xFF ? 3 : 4;
}

std::optional<std::size_t> NextHeader(const Bytes& file, std::size_t from) {
    for (std::size_t skipped = 0;;) {
        const auto four = FourAt(file, from + skipped);
        if (!four)
            return std::nullopt;
        if (model::ParseHeader(*four, std::nullopt))
            return from + skipped;
        if (skipped >= kSearchLimit)
            return std::nullopt;
        skipped += AnalysisStep(*four);
    }
}

/// The analysis measures Layer II at the lower sampling frequencies at half its length.
std::size_t AnalysisLength(const model::Header& header) {
    const int length = header.kbps * (header.lsf ? 72000 : 144000) / header.sampleRate;
    return static_cast<std::size_t>(length) + (header.padding ? 1 : 0);
}

std::optional<std::size_t> FirstFrame(const Bytes& file, std::size_t from) {
    for (;;) {
        const auto found = NextHeader(file, from);
        if (!found)
            return std::nullopt;
        const auto header = model::ParseHeader(*FourAt(file, *found), std::nullopt);
        if (header->layer == 3)
            return found;
        const auto next = FourAt(file, *found + AnalysisLength(*header));
        if (!next)
            return std::nullopt;
        if (model::ParseHeader(*next, std::nullopt))
            return found;
        from = *found + 1;
    }
}

std::size_t HeadBytes(const model::Header& header) {
    const std::size_t head = header.crc ? 6 : 4;
    return header.layer == 3 ? head + static_cast<std::size_t>(header.SideInfoBytes()) : head;
}

bool SaysInfo(const Bytes& file, std::size_t frame, std::size_t length) {
    constexpr std::string_view kText = "Info";
    constexpr std::size_t kTextOffset = 36;
    return length >= kTextOffset + kText.size() &&
           std::equal(kText.begin(), kText.end(),
                      file.begin() + static_cast<std::ptrdiff_t>(frame + kTextOffset));
}

/// Fills the model's frames from its start on.
void Read(const Bytes& file, ReadingModel& reading) {
    std::size_t position = reading.start;
    for (;;) {
        TakenFrame frame;
        frame.searchedFrom = position;
        auto four = FourAt(file, position);
        while (four && !model::ParseHeader(*four, reading.format)) {
            position += static_cast<std::size_t>(model::SearchStep(*four));
            four = FourAt(file, position);
        }
        if (!four)
            return;
        frame.offset = position;
        frame.header = *model::ParseHeader(*four, reading.format);
        frame.isDelivered = frame.header.sampleRate == reading.format.sampleRate &&
                            frame.header.channels == reading.format.channels;
        const std::size_t head = HeadBytes(frame.header);
        const auto length = static_cast<std::size_t>(frame.header.frameBytes);
        frame.taken = frame.isDelivered ? std::max(length, head) : head;
        if (frame.taken > file.size() - position) {
            reading.cutFrame = position;
            reading.isCutInCrcWord = frame.header.crc && file.size() - position < 6;
            return;
        }
        position += frame.taken;
        reading.frames.push_back(frame);
    }
}

} // namespace

std::vector<TakenFrame> ReadingModel::Delivered() const {
    std::vector<TakenFrame> delivered;
    std::ranges::copy_if(frames, std::back_inserter(delivered), &TakenFrame::isDelivered);
    return delivered;
}

ReadingModel ReadingWithoutIndex(const Bytes& file) {
    ReadingModel reading;
    const auto behindTag = BehindTag(file);
    const auto first = behindTag ? FirstFrame(file, *behindTag) : std::nullopt;
    if (!first)
        return reading;
    reading.first = *first;
    reading.start = *first;
    reading.format = *model::ParseHeader(*FourAt(file, *first), std::nullopt);
    const auto length = static_cast<std::size_t>(reading.format.frameBytes);
    reading.opens = std::max(length, HeadBytes(reading.format)) <= file.size() - *first;
    if (!reading.opens)
        return reading;
    if (reading.format.layer == 3 && SaysInfo(file, *first, length))
        reading.start += length;
    Read(file, reading);
    return reading;
}

ReadingModel ReadingFrom(const Bytes& file, std::size_t firstEntry) {
    ReadingModel reading;
    const auto four = FourAt(file, firstEntry);
    const auto format = four ? model::ParseHeader(*four, std::nullopt) : std::nullopt;
    reading.opens = format && HeadBytes(*format) <= file.size() - firstEntry;
    if (!reading.opens)
        return reading;
    reading.first = firstEntry;
    reading.start = firstEntry;
    reading.format = *format;
    Read(file, reading);
    return reading;
}

} // namespace test
