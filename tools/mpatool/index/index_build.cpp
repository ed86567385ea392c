#include "mpatool/index/index_build.h"

#include "fileio/file_reader.h"
#include "index/builder/frame_scan.h"
#include "mpatool/index/index_end.h"
#include "mpatool/index/index_file.h"
#include "mpatool/index/index_progress.h"
#include "mpatool/output/shown_text.h"
#include "mpatool/output/tool_error.h"
#include "trnmpafileread/index_creator.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace mpatool {

namespace {

/// The longest media file of which the module's 32-bit percentage is right.
constexpr std::int64_t kExactPercentBytes = std::numeric_limits<std::uint32_t>::max() / 100;

/// Asks beforehand what the module would find out only after it has emptied the index. Gives the end of the
/// first frame, which the index does not list.
std::int64_t RequireIndexable(const std::wstring& file) {
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
    return scan.Position();
}

/// What the module takes for the end of the file must be that, and the file what it was when it began.
void RequireWhole(const std::wstring& file, const UnfinishedIndex& place, std::int64_t firstFrameEnd) {
    const auto index = IndexFile::Beside(place.Media());
    const std::int64_t bytes = MediaBytes(file);
    if (!index || index->Header().mediaFileSize != bytes)
        throw ToolError(file, "has changed while it was indexed");
    RequireReadableBehind(file, std::max(firstFrameEnd, IndexedBytes(place.Index())), bytes);
}

} // namespace

IndexBuild::IndexBuild(std::wstring file, bool replace, MakeReader makeReader)
    : file_(std::move(file)), replace_(replace), makeReader_(std::move(makeReader)),
      bytesToIndex_(mpatool::BytesToIndex(file_)) {}

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
    const std::int64_t firstFrameEnd = RequireIndexable(file_);
    UnfinishedIndex place(file_, replace_);
    try {
        const PLUGIN_INDEX_PROGRESS record = RunModule(place);
        if (record.state == TRN_INDEX_FINISHED) {
            RequireWhole(file_, place, firstFrameEnd);
            return {file_, IndexOutcome::End::kDone, record.framesIndexed, place.Commit()};
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
    const PLUGIN_INDEX_PROGRESS record = reader_->IndexProgress();
    const std::int64_t done = bytesToIndex_ <= kExactPercentBytes
                                  ? bytesToIndex_ * std::int64_t{record.percent} / 100
                                  : IndexedBytes(unfinishedIndex_);
    return {std::min(done, bytesToIndex_), record.framesIndexed};
}

IndexOutcome IndexBuild::Ended(IndexOutcome::End end, const std::string& message) const {
    return {file_, end, 0, ShownPath(file_) + ": " + message};
}

} // namespace mpatool
