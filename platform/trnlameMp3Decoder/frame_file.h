/// A media file in which frames are looked for.
#pragma once

#include "trcommontoolsr/file_access.h"
#include "trnlameMp3Decoder/frame_header.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace mp3 {

/// Where a frame stands, and its header.
struct FramePlace {
    std::int64_t position = 0;
    FrameHeader header;
};

class FrameFile {
public:
    bool Open(const CComBSTR& path);

    std::int64_t Length() const { return file_.GetLength(); }
    std::int64_t Position() const { return file_.GetPosition(); }
    bool SetPosition(std::int64_t position) { return file_.SetPosition(position) == 1; }
    /// Reads at the position; fewer bytes only at the end.
    std::size_t Read(std::span<std::uint8_t> bytes);

    /// The first frame of a stream: behind ID3v2 tags that stand at `position`, within 64 KiB, and followed
    /// by another frame of its format or by the file's end; if there is no such, then the first whole one.
    /// Moves the position.
    std::optional<FramePlace> FindFirstFrame(std::int64_t position);

    /// The next header of that format at or behind `position`. Moves the position.
    std::optional<FramePlace> FindFrame(std::int64_t position, const StreamFormat& format);

private:
    std::int64_t SkipTags(std::int64_t position);

    TRCT_FileAccess file_;
};

} // namespace mp3
