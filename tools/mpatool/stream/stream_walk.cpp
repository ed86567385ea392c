#include "mpatool/stream/stream_walk.h"

#include "mpa/stream_start.h"
#include "mpatool/output/tool_error.h"
#include "os/console.h"

namespace mpatool {

StreamWalk::StreamWalk(const std::wstring& path) : fileSource_(file_), source_(fileSource_) {
    RequireReadable(path);
    if (file_.OpenFile(path.c_str(), TRCT_OPEN_FOR_READING) != 1)
        throw ToolError(path, "cannot be opened");
    index_ = IndexFile::Beside(path);
    if (index_)
        StartAtIndex(path);
    else
        StartAtAudio(path);
}

void StreamWalk::StartAtIndex(const std::wstring& path) {
    const auto entry = index_->Next();
    index_->Rewind();
    if (!entry)
        throw ToolError(path, "the index beside it lists no frames (mpatool index --force builds it anew)");
    walk_.emplace(source_, entry->frameOffset);
    const auto frame = walk_->Next();
    if (!frame)
        throw ToolError(path, "no MPEG audio frames from the first entry of the index beside it on");
    first_ = *frame;
}

void StreamWalk::StartAtAudio(const std::wstring& path) {
    const auto start = trnmpa::LocateAudioStart(source_);
    if (!start)
        throw ToolError(path, "no MPEG audio frames found");
    hasInfoFrame_ = start->hasInfoFrame;
    walk_.emplace(source_, start->dataStart, start->firstHeader);
    const auto frame = walk_->Next();
    if (!frame)
        throw ToolError(path, "no whole MPEG audio frame found");
    first_ = *frame;
}

std::int32_t StreamWalk::DelaySamples(Decoder decoder) const {
    return index_ ? 0 : DelayOf(decoder, first_.header.layer);
}

std::optional<trnmpa::WalkedFrame> StreamWalk::Next() {
    if (os::InterruptRequested())
        throw Interrupted();
    if (!atFirst_)
        return walk_->Next();
    atFirst_ = false;
    return first_;
}

} // namespace mpatool
