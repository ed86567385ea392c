#include "mpatool/index/unfinished_index.h"

#include "index/index_format.h"
#include "mpatool/output/shown_text.h"
#include "mpatool/output/tool_error.h"
#include "os/links.h"
#include "os/output_file.h"
#include "os/paths.h"

namespace mpatool {

namespace {

bool Exists(const std::wstring& path) {
    return os::KindOfPath(path) != os::PathKind::kMissing;
}

/// A name for the second media file, free together with its index's.
std::wstring FreeNameBeside(const std::wstring& media) {
    std::wstring name;
    do {
        name = os::TemporaryNameBeside(media);
    } while (Exists(name) || Exists(trnmpa::IndexPathFor(name)));
    return name;
}

/// Finds out whether files can be made there, and takes the name.
void Reserve(const std::wstring& media, const std::wstring& index) {
    os::OutputFile file;
    if (!file.Create(index))
        throw ToolError(media, L"no index can be written beside it: " + file.ErrorText());
}

/// Gives what could not be removed.
std::string Remove(const std::wstring& path) {
    if (path.empty() || !Exists(path) || os::DeleteFileAt(path))
        return {};
    return ShownPath(path) + " was left";
}

} // namespace

void RequireIndexMayBeMade(const std::wstring& media, bool replace) {
    const std::wstring index = trnmpa::IndexPathFor(media);
    switch (os::KindOfPath(index)) {
    case os::PathKind::kMissing:
        return;
    case os::PathKind::kFile:
        if (!replace)
            throw ToolError(index, "exists already; use --force to replace it");
        return;
    case os::PathKind::kFolder:
        throw ToolError(index, "Is a directory");
    case os::PathKind::kDevice:
        throw ToolError(index, "Not a regular file");
    }
}

UnfinishedIndex::UnfinishedIndex(const std::wstring& media, bool replace, Links links)
    : media_(media), index_(trnmpa::IndexPathFor(media)), replace_(replace) {
    RequireIndexMayBeMade(media_, replace_);
    workMedia_ = FreeNameBeside(media_);
    workIndex_ = trnmpa::IndexPathFor(workMedia_);
    Reserve(media_, workIndex_);
    if (links == Links::kNone || !os::LinkBeside(media_, workMedia_))
        BuildInPlace();
}

/// An earlier index gets the reserved name; where there is none, the reserved file gets the index's name and
/// so keeps anyone else from taking it.
void UnfinishedIndex::BuildInPlace() {
    const std::wstring reserved = workIndex_;
    workMedia_ = media_;
    workIndex_ = index_;
    const bool exists = Exists(index_);
    const std::wstring failure =
        exists ? os::MoveFileTo(index_, reserved, true) : os::MoveFileTo(reserved, index_, false);
    if (!failure.empty()) {
        os::DeleteFileAt(reserved);
        throw ToolError(index_, failure);
    }
    if (exists)
        aside_ = reserved;
}

std::string UnfinishedIndex::Commit() {
    std::wstring superfluous = aside_;
    if (workMedia_ != media_) {
        const std::wstring failure = os::MoveFileTo(workIndex_, index_, replace_);
        if (!failure.empty())
            throw ToolError(index_, failure);
        superfluous = workMedia_;
    }
    open_ = false;
    return Remove(superfluous);
}

std::string UnfinishedIndex::Abandon() {
    if (!open_)
        return {};
    open_ = false;
    if (!aside_.empty())
        return PutBack();
    const std::string failure = RemoveUnfinished();
    if (!failure.empty())
        return failure;
    return Exists(index_) ? "the old index is untouched" : "no index was left";
}

std::string UnfinishedIndex::PutBack() {
    const std::wstring failure = os::MoveFileTo(aside_, index_, true);
    if (failure.empty())
        return "the old index is back in its place";
    return "the old index is now " + ShownPath(aside_) + ": " + os::NarrowToUtf8(failure);
}

/// Gives what could not be removed.
std::string UnfinishedIndex::RemoveUnfinished() {
    std::string left = workMedia_ != media_ ? Remove(workMedia_) : std::string();
    const std::string leftIndex = Remove(workIndex_);
    if (!left.empty() && !leftIndex.empty())
        left += "; ";
    return left + leftIndex;
}

} // namespace mpatool
