#include "trnlameMp3Decoder/frame_file.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <vector>

namespace mp3 {

namespace {

using Window = std::span<const std::uint8_t>;

constexpr std::size_t kFirstFrameRange = 64 * 1024;
constexpr std::size_t kSearchBytes = 4096;

std::optional<FrameHeader> HeaderAt(Window window, std::size_t at) {
    if (at > window.size() || window.size() - at < kHeaderBytes)
        return std::nullopt;
    return ParseHeader(window.subspan(at).first<kHeaderBytes>());
}

bool StartsWith(Window bytes, std::string_view text) {
    return bytes.size() >= text.size() && std::equal(text.begin(), text.end(), bytes.begin());
}

/// Whether what stands behind a frame speaks for it: a frame like it, or the end of the sound. The window
/// ends where the file does, or reaches further than any frame.
bool ContinuesWell(Window window, std::size_t next, const StreamFormat& format) {
    if (const std::optional<FrameHeader> following = HeaderAt(window, next))
        return following->format == format;
    const Window rest = window.subspan(next);
    return rest.size() < kHeaderBytes || StartsWith(rest, "TAG") || StartsWith(rest, "APETAGEX");
}

} // namespace

bool FrameFile::Open(const CComBSTR& path) {
    return file_.OpenFile(path, TRCT_OPEN_FOR_READING) == 1;
}

std::size_t FrameFile::Read(std::span<std::uint8_t> bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        constexpr std::size_t kMost = 1U << 30;
        const auto count = static_cast<std::uint32_t>(std::min(bytes.size() - done, kMost));
        const std::uint32_t read = file_.Read(bytes.data() + done, count);
        if (read == 0)
            break;
        done += read;
    }
    return done;
}

/// The position behind the ID3v2 tags that stand one after the other.
std::int64_t FrameFile::SkipTags(std::int64_t position) {
    constexpr std::size_t kTagHeaderBytes = 10;
    constexpr std::uint8_t kHasFooter = 0x10;
    // Files have one or two; a file made of tags is none to be read to its end.
    constexpr int kMostTags = 64;
    std::array<std::uint8_t, kTagHeaderBytes> tag{};
    for (int tags = 0; tags < kMostTags && SetPosition(position) && Read(tag) == tag.size(); ++tags) {
        if (std::toupper(tag[0]) != 'I' || std::toupper(tag[1]) != 'D' || tag[2] != '3')
            break;
        std::int64_t size = 0;
        for (std::size_t i = 6; i < kTagHeaderBytes; ++i)
            size = size * 128 + (tag[i] & 0x7F);
        const bool footer = tag[3] >= 4 && (tag[5] & kHasFooter) != 0;
        position += size + static_cast<std::int64_t>(kTagHeaderBytes * (footer ? 2 : 1));
    }
    return position;
}

std::optional<FramePlace> FrameFile::FindFirstFrame(std::int64_t position) {
    position = SkipTags(position);
    if (!SetPosition(position))
        return std::nullopt;
    std::vector<std::uint8_t> bytes(kFirstFrameRange + kLongestFrame + kHeaderBytes);
    const Window window(bytes.data(), Read(bytes));
    std::optional<FramePlace> unconfirmed;
    for (std::size_t at = 0; at < std::min(window.size(), kFirstFrameRange); ++at) {
        const std::optional<FrameHeader> header = HeaderAt(window, at);
        if (!header || header->frameBytes > window.size() - at)
            continue;
        const FramePlace place{position + static_cast<std::int64_t>(at), *header};
        if (ContinuesWell(window, at + header->frameBytes, header->format))
            return place;
        if (!unconfirmed)
            unconfirmed = place;
    }
    return unconfirmed;
}

std::optional<FramePlace> FrameFile::FindFrame(std::int64_t position, const StreamFormat& format) {
    std::array<std::uint8_t, kSearchBytes> bytes{};
    // Most often the frame stands where it is expected.
    std::size_t wanted = kHeaderBytes;
    while (SetPosition(position)) {
        const std::size_t read = Read(std::span(bytes).first(wanted));
        const Window window(bytes.data(), read);
        for (std::size_t at = 0; at + kHeaderBytes <= read; ++at) {
            const std::optional<FrameHeader> header = HeaderAt(window, at);
            if (header && header->format == format)
                return FramePlace{position + static_cast<std::int64_t>(at), *header};
        }
        if (read < wanted)
            break;
        position += static_cast<std::int64_t>(read - kHeaderBytes + 1);
        wanted = bytes.size();
    }
    return std::nullopt;
}

} // namespace mp3
