#include "mpatool/info/file_tags.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>

namespace mpatool {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::int64_t kId3v2HeaderBytes = 10;
constexpr std::int64_t kApeHeaderBytes = 32;
constexpr std::int64_t kId3v1Bytes = 128;
/// Enough for every tag that a file can reasonably have at one end.
constexpr std::size_t kMostTags = 16;

bool Says(Bytes bytes, std::string_view text) {
    return bytes.size() >= text.size() && std::equal(text.begin(), text.end(), bytes.begin());
}

std::int64_t LittleEndian32(Bytes bytes) {
    return std::int64_t{bytes[0]} | std::int64_t{bytes[1]} << 8 | std::int64_t{bytes[2]} << 16 |
           std::int64_t{bytes[3]} << 24;
}

/// Seven bits a byte; nothing when an eighth is set.
std::optional<std::int64_t> Id3v2Size(Bytes bytes) {
    std::int64_t size = 0;
    for (const std::uint8_t byte : bytes.first(4)) {
        if (byte >= 0x80)
            return std::nullopt;
        size = size << 7 | byte;
    }
    return size;
}

std::optional<FileTag> Id3v2At(trnmpa::SourceWindow& window, std::int64_t offset) {
    constexpr std::uint8_t kHasFooter = 0x10;
    const Bytes bytes = window.At(offset, kId3v2HeaderBytes);
    if (bytes.size() < kId3v2HeaderBytes || !Says(bytes, "ID3") || bytes[3] == 0xFF)
        return std::nullopt;
    const auto size = Id3v2Size(bytes.subspan(6));
    if (!size)
        return std::nullopt;
    const std::int64_t footer = (bytes[5] & kHasFooter) != 0 ? kId3v2HeaderBytes : 0;
    return FileTag{"ID3v2." + std::to_string(bytes[3]), offset, kId3v2HeaderBytes + *size + footer};
}

/// The tag's header and its footer are made alike; the size leaves the header out.
struct ApeMark {
    std::string name;
    std::int64_t size = 0;
    bool isHeader = false;
    bool hasHeader = false;
};

std::optional<ApeMark> ApeMarkAt(trnmpa::SourceWindow& window, std::int64_t offset) {
    const Bytes bytes = window.At(offset, kApeHeaderBytes);
    if (bytes.size() < kApeHeaderBytes || !Says(bytes, "APETAGEX"))
        return std::nullopt;
    const std::int64_t version = LittleEndian32(bytes.subspan(8)) / 1000;
    const std::int64_t flags = LittleEndian32(bytes.subspan(20));
    return ApeMark{version == 1 || version == 2 ? "APEv" + std::to_string(version) : "APE",
                   LittleEndian32(bytes.subspan(12)), (flags >> 29 & 1) != 0, (flags >> 31 & 1) != 0};
}

std::optional<FileTag> ApeAt(trnmpa::SourceWindow& window, std::int64_t offset) {
    const auto mark = ApeMarkAt(window, offset);
    if (!mark || !mark->isHeader)
        return std::nullopt;
    return FileTag{mark->name, offset, kApeHeaderBytes + mark->size};
}

/// The tag of `bytes` that ends at `end`, unless it would reach before `begin`.
std::optional<FileTag> EndingAt(const std::string& name, std::int64_t begin, std::int64_t end,
                                std::int64_t bytes) {
    if (bytes <= 0 || bytes > end - begin)
        return std::nullopt;
    return FileTag{name, end - bytes, bytes};
}

std::optional<FileTag> Id3v1Before(trnmpa::SourceWindow& window, std::int64_t begin, std::int64_t end) {
    constexpr std::int64_t kExtendedBytes = 227;
    if (!Says(window.At(end - kId3v1Bytes, 3), "TAG"))
        return std::nullopt;
    const bool isExtended = Says(window.At(end - kId3v1Bytes - kExtendedBytes, 4), "TAG+");
    return EndingAt("ID3v1", begin, end, kId3v1Bytes + (isExtended ? kExtendedBytes : 0));
}

std::optional<FileTag> ApeBefore(trnmpa::SourceWindow& window, std::int64_t begin, std::int64_t end) {
    const auto mark = ApeMarkAt(window, end - kApeHeaderBytes);
    if (!mark || mark->isHeader || mark->size < kApeHeaderBytes)
        return std::nullopt;
    return EndingAt(mark->name, begin, end, mark->size + (mark->hasHeader ? kApeHeaderBytes : 0));
}

std::optional<FileTag> Id3v2Before(trnmpa::SourceWindow& window, std::int64_t begin, std::int64_t end) {
    const Bytes footer = window.At(end - kId3v2HeaderBytes, kId3v2HeaderBytes);
    if (footer.size() < kId3v2HeaderBytes || !Says(footer, "3DI"))
        return std::nullopt;
    const auto size = Id3v2Size(footer.subspan(6));
    return size ? EndingAt("ID3v2." + std::to_string(footer[3]), begin, end, *size + 2 * kId3v2HeaderBytes)
                : std::nullopt;
}

/// Version 2: six digits, the tag's size without them, stand before its last nine bytes.
std::optional<FileTag> Lyrics3Before(trnmpa::SourceWindow& window, std::int64_t begin, std::int64_t end) {
    constexpr std::int64_t kDigits = 6;
    constexpr std::int64_t kMarkBytes = 9;
    const Bytes bytes = window.At(end - kDigits - kMarkBytes, kDigits + kMarkBytes);
    if (bytes.size() < kDigits + kMarkBytes || !Says(bytes.subspan(kDigits), "LYRICS200"))
        return std::nullopt;
    std::int64_t size = 0;
    for (const std::uint8_t digit : bytes.first(kDigits)) {
        if (digit < '0' || digit > '9')
            return std::nullopt;
        size = size * 10 + digit - '0';
    }
    const auto tag = EndingAt("Lyrics3v2", begin, end, size + kDigits + kMarkBytes);
    return tag && Says(window.At(tag->offset, 11), "LYRICSBEGIN") ? tag : std::nullopt;
}

/// Version 1: at most 5100 bytes between two words.
std::optional<FileTag> OldLyrics3Before(trnmpa::SourceWindow& window, std::int64_t begin, std::int64_t end) {
    constexpr std::string_view kBegin = "LYRICSBEGIN";
    constexpr std::string_view kEnd = "LYRICSEND";
    constexpr std::int64_t kMostBytes = 5100 + 11 + 9;
    if (!Says(window.At(end - 9, 9), kEnd))
        return std::nullopt;
    const std::int64_t from = std::max(begin, end - kMostBytes);
    const Bytes bytes = window.At(from, static_cast<std::size_t>(end - from));
    const auto found = std::search(bytes.begin(), bytes.end(), kBegin.begin(), kBegin.end());
    return found == bytes.end() ? std::nullopt
                                : EndingAt("Lyrics3v1", begin, end, end - from - (found - bytes.begin()));
}

std::vector<FileTag> LeadingTags(trnmpa::SourceWindow& window, std::int64_t fileBytes) {
    std::vector<FileTag> tags;
    std::int64_t offset = 0;
    while (tags.size() < kMostTags && offset < fileBytes) {
        auto tag = Id3v2At(window, offset);
        if (!tag)
            tag = ApeAt(window, offset);
        if (!tag)
            break;
        tag->bytes = std::min(tag->bytes, fileBytes - offset);
        offset = tag->End();
        tags.push_back(*tag);
    }
    return tags;
}

std::vector<FileTag> TrailingTags(trnmpa::SourceWindow& window, std::int64_t begin, std::int64_t fileBytes) {
    using Finder = std::optional<FileTag> (*)(trnmpa::SourceWindow&, std::int64_t, std::int64_t);
    constexpr Finder kFinders[] = {Id3v1Before, ApeBefore, Lyrics3Before, OldLyrics3Before, Id3v2Before};
    std::vector<FileTag> tags;
    std::int64_t end = fileBytes;
    for (bool isFound = true; isFound && tags.size() < kMostTags;) {
        isFound = false;
        for (const Finder find : kFinders) {
            const auto tag = find(window, begin, end);
            if (!tag)
                continue;
            tags.insert(tags.begin(), *tag);
            end = tag->offset;
            isFound = true;
            break;
        }
    }
    return tags;
}

} // namespace

FileTags FindTags(trnmpa::SourceWindow& window, std::int64_t fileBytes) {
    FileTags tags;
    tags.leading = LeadingTags(window, fileBytes);
    tags.trailing = TrailingTags(window, tags.Begin(), fileBytes);
    return tags;
}

} // namespace mpatool
