/// The frames of a file that the sample reader delivers, one after the other.
#pragma once

#include "mpa/file_header_sources.h"
#include "mpa/frame_walk.h"
#include "mpatool/index/index_file.h"
#include "mpatool/module/decoder_choice.h"
#include "mpatool/stream/interruptible_source.h"
#include "trcommontoolsr/file_access.h"

#include <cstdint>
#include <optional>
#include <string>

namespace mpatool {

/// From the first entry of the index on when there is one beside the file, else from the first frame that is
/// no "Info" frame.
class StreamWalk {
public:
    /// Throws ToolError when the file cannot be read or holds no frame.
    explicit StreamWalk(const std::wstring& path);
    StreamWalk(const StreamWalk&) = delete;
    StreamWalk& operator=(const StreamWalk&) = delete;

    std::int64_t FileBytes() const { return file_.GetLength(); }
    /// The index with all its entries unread, or nothing.
    std::optional<IndexFile>& Index() { return index_; }
    /// An "Info" frame was passed over at the start; with an index none is looked for.
    bool HasInfoFrame() const { return hasInfoFrame_; }
    /// Samples per channel that `decoder` decodes before sample 0 and the reader leaves out.
    std::int32_t DelaySamples(Decoder decoder) const;

    /// The frame that the next call of Next gives; there is one after construction.
    const trnmpa::WalkedFrame& First() const { return first_; }

    /// The next frame, or nothing at the end. Throws Interrupted.
    std::optional<trnmpa::WalkedFrame> Next();

private:
    void StartAtIndex(const std::wstring& path);
    void StartAtAudio(const std::wstring& path);

    TRCT_FileAccess file_;
    trnmpa::FileAccessHeaderSource fileSource_;
    InterruptibleSource source_;
    std::optional<IndexFile> index_;
    std::optional<trnmpa::FrameWalk> walk_;
    bool hasInfoFrame_ = false;
    bool atFirst_ = true;
    trnmpa::WalkedFrame first_;
};

} // namespace mpatool
