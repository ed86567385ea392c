#include "mpa/id3v2_tag.h"

#include "mpa/source_window.h"

#include <algorithm>
#include <array>

namespace trnmpa {

namespace {

constexpr std::int64_t kTagHeaderBytes = 10;
constexpr std::int64_t kTagSizeLimit = 256 * 1024 * 1024;

/// "ID3", version (2 bytes), flags, size (4 bytes); what the file lacks is 0.
using TagHeader = std::array<std::uint8_t, kTagHeaderBytes>;

TagHeader ReadTagHeader(HeaderSource& source) {
    TagHeader header = {};
    source.Read(header);
    return header;
}

std::uint8_t UpperCase(std::uint8_t byte) {
    return byte >= 'a' && byte <= 'z' ? static_cast<std::uint8_t>(byte - 'a' + 'A') : byte;
}

bool HasTagIdentifier(const TagHeader& header) {
    return UpperCase(header[0]) == 'I' && UpperCase(header[1]) == 'D' && header[2] == '3';
}

std::int64_t TagSize(const TagHeader& header, std::uint8_t mask) {
    std::int64_t size = 0;
    for (std::size_t i = 6; i < header.size(); ++i)
        size = size * 128 + (header[i] & mask);
    return size;
}

} // namespace

bool SkipId3v2Tag(HeaderSource& source, std::int64_t& firstFrameOffset) {
    firstFrameOffset = 0;
    const TagHeader header = ReadTagHeader(source);
    // The four first bytes are compared as a text that is cut before its last "3".
    if (!HasTagIdentifier(header) || header[3] == '3')
        return true;
    firstFrameOffset = TagSize(header, 0xFF);
    if (firstFrameOffset >= kTagSizeLimit)
        return false;
    firstFrameOffset += kTagHeaderBytes;
    return true;
}

bool SkipTagAndPadding(HeaderSource& source, std::int64_t& dataStart, TagSizeBits sizeBits) {
    dataStart = 0;
    if (!source.SetPosition(0))
        return false;
    const TagHeader header = ReadTagHeader(source);
    if (!HasTagIdentifier(header))
        return true;
    const std::int64_t size = TagSize(header, static_cast<std::uint8_t>(sizeBits));
    if (size >= kTagSizeLimit)
        return false;
    dataStart = size + kTagHeaderBytes;
    SourceWindow window(source);
    for (;;) {
        const auto bytes = window.At(dataStart, SourceWindow::kBytes);
        const auto found = std::ranges::find(bytes, 0xFF);
        dataStart += found - bytes.begin();
        if (found != bytes.end() || bytes.empty())
            return !bytes.empty();
    }
}

} // namespace trnmpa
