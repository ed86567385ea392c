#include "mpatool/index_build.h"

#include "fileio/file_reader.h"
#include "index/builder/frame_scan.h"
#include "mpatool/index_progress.h"
#include "mpatool/tool_error.h"
#include "os/paths.h"
#include "trnmpafileread/index_creator.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace mpatool {

namespace {

/// Asks beforehand what the module would find out only after it has emptied the index.
void RequireIndexable(const std::wstring& file) {
    RequireReadable(file);
    trnmpa::CFileReader media;
    if (media.Open(file) != 1)
        throw ToolError(file, "cannot be opened");
    if (media.GetLength() > std::numeric_limits<std::uint32_t>::max())
        throw ToolError(file, "has 4 GiB or more; an index cannot describe it");
    trnmpa::FrameScan scan(media);
    trnmpa::MpaIndexHeader header;
    if (!scan.Start(header))
        throw ToolError(file, "no MPEG audio frames found where an index starts");
}

} // namespace

IndexBuild::IndexBuild(std::wstring file, bool replace, MakeReader makeReader)
    : file_(std::move(file)), replace_(replace), makeReader_(std::move(makeReader)),
      mediaBytes_(mpatool::MediaBytes(file_)) {}

IndexOutcome IndexBuild::Run() {
    try {
        return Build();
    } catch (const std::bad_alloc&) {
        return Ended(IndexOutcome::End::kFailed, "out of memory");
    } catch (const std::exception& error) {
        return {file_, IndexOutcome::End::kFailed, 0, error.what()};
    }
}

IndexOutcome IndexBuild::Build() {
    RequireIndexMayBeMade(file_, replace_);
    RequireIndexable(file_);
    UnfinishedIndex place(file_, replace_);
    try {
        const PLUGIN_INDEX_PROGRESS record = RunModule(place);
        if (record.state == TRN_INDEX_FINISHED) {
            place.Commit();
            return {file_, IndexOutcome::End::kDone, record.framesIndexed, {}};
        }
    } catch (const ToolError& error) {
        return {file_, IndexOutcome::End::kFailed, 0, std::string(error.what()) + "; " + place.Abandon()};
    }
    if (cancelled_)
        return Ended(IndexOutcome::End::kCancelled, "cancelled; " + place.Abandon());
    return Ended(IndexOutcome::End::kFailed,
                 "the module failed, perhaps for want of room on the disk; " + place.Abandon());
}

/// The reader, and with it every file that it holds, is gone afterwards.
PLUGIN_INDEX_PROGRESS IndexBuild::RunModule(const UnfinishedIndex& place) {
    ModuleReader reader = makeReader_(file_);
    if (reader.Open(place.Media(), TRN_OPEN_INDEX_BUILDER) != 1)
        throw ToolError(file_, "the module cannot begin its index");
    Show(&reader, place.Index());
    if (!cancelled_)
        reader.BuildIndex();
    Show(nullptr, {});
    return reader.IndexProgress();
}

void IndexBuild::Show(ModuleReader* reader, const std::wstring& index) {
    const std::lock_guard lock(mutex_);
    reader_ = reader;
    unfinishedIndex_ = index;
}

void IndexBuild::Cancel() {
    cancelled_ = true;
    const std::lock_guard lock(mutex_);
    if (reader_ != nullptr)
        reader_->CancelIndexing();
}

IndexBuild::Progress IndexBuild::Poll() {
    const std::lock_guard lock(mutex_);
    if (reader_ == nullptr)
        return {};
    return {std::min(IndexedBytes(unfinishedIndex_), mediaBytes_), reader_->IndexProgress().framesIndexed};
}

IndexOutcome IndexBuild::Ended(IndexOutcome::End end, const std::string& message) const {
    return {file_, end, 0, os::NarrowToUtf8(file_) + ": " + message};
}

} // namespace mpatool
