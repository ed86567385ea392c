// The plain C functions that build an index.

#include "index/builder/file_index_writer.h"
#include "index/builder/frame_scan.h"
#include "os/output_file.h"
#include "plugin/c_paths.h"
#include "plugin/c_records.h"
#include "plugin/c_results.h"

#include <limits>
#include <string>

namespace {

/// An index on its way; what was not put in its place is deleted.
class UnfinishedIndex {
public:
    explicit UnfinishedIndex(const std::wstring& index)
        : index_(os::ResolveLinks(index)), name_(os::TemporaryNameBeside(index_)) {}
    ~UnfinishedIndex() {
        try {
            os::DeleteFileAt(name_);
        } catch (...) {
            // It stays if there is not enough memory to form its name.
        }
    }
    UnfinishedIndex(const UnfinishedIndex&) = delete;
    UnfinishedIndex& operator=(const UnfinishedIndex&) = delete;

    const std::wstring& Name() const { return name_; }

    /// Nothing but a file gives way to an index.
    bool MayBePutInPlace() const {
        const os::PathKind kind = os::KindOfPath(index_);
        return kind == os::PathKind::kMissing || kind == os::PathKind::kFile;
    }
    bool PutInPlace() { return os::MoveFileTo(name_, index_, true).empty(); }

private:
    std::wstring index_;
    std::wstring name_;
};

/// Finds out what the builder would not tell.
trnmpa_result CheckMedia(const std::wstring& path) {
    trnmpa::CFileReader media;
    if (media.Open(path) != 1)
        return TRNMPA_ERROR_FILE;
    if (media.GetLength() > std::numeric_limits<std::uint32_t>::max())
        return TRNMPA_ERROR_TOO_LARGE;
    trnmpa::MpaIndexHeader unused;
    return trnmpa::FrameScan(media).Start(unused) ? TRNMPA_OK : TRNMPA_ERROR_FORMAT;
}

/// What a build that has run came to.
trnmpa_result ResultOf(trnmpa::KwMpaFileIndexWriter& builder) {
    PROGRESS_INFO progress = {};
    builder.GetFileIdxingProgress(progress);
    if (progress.state == TRN_INDEX_FINISHED)
        return TRNMPA_OK;
    return progress.state == TRN_INDEX_CANCELLED ? TRNMPA_ERROR_CANCELLED : TRNMPA_ERROR_INDEX_WRITE;
}

/// Both files are closed afterwards.
trnmpa_result WriteIndex(const std::wstring& media, const std::wstring& index,
                         trnmpa::KwMpaFileIndexWriter::Watcher watcher) {
    trnmpa::KwMpaFileIndexWriter builder;
    builder.Initialize();
    builder.SetWatcher(std::move(watcher));
    if (builder.SetInputFile(media, index) != 1 || builder.CreateFileIndex() != 1)
        return TRNMPA_ERROR_INDEX_WRITE;
    return ResultOf(builder);
}

trnmpa_result Build(const std::wstring& media, trnmpa_progress_function progress, void* user,
                    trnmpa_index_progress& reached) {
    const trnmpa_result usable = CheckMedia(media);
    if (usable != TRNMPA_OK)
        return usable;
    UnfinishedIndex index(trnmpa::IndexPathFor(media));
    if (!index.MayBePutInPlace())
        return TRNMPA_ERROR_INDEX_WRITE;
    const trnmpa_result written = WriteIndex(media, index.Name(), [&](const trnmpa::IndexScanProgress& step) {
        reached = {sizeof reached, step.frames, step.bytesDone, step.bytesTotal};
        const trnmpa_index_progress shown = reached;
        return progress == nullptr || progress(user, &shown) == 0;
    });
    if (written == TRNMPA_OK && !index.PutInPlace())
        return TRNMPA_ERROR_INDEX_WRITE;
    return written;
}

template <typename Unit>
trnmpa_result Build(const Unit* path, trnmpa_progress_function progress, void* user,
                    trnmpa_index_progress* result) {
    if (path == nullptr || !trnmpa::IsUsableOrNull(result))
        return TRNMPA_ERROR_ARGUMENT;
    trnmpa_index_progress reached = {};
    const trnmpa_result code = trnmpa::Answer([&] {
        const auto media = trnmpa::PathFrom(path);
        return media ? Build(*media, progress, user, reached) : trnmpa_result{TRNMPA_ERROR_PATH};
    });
    trnmpa::Give(result, reached);
    return code;
}

} // namespace

trnmpa_result trnmpa_index_build_utf8(const char* path, trnmpa_progress_function progress, void* user,
                                      trnmpa_index_progress* result) noexcept {
    return Build(path, progress, user, result);
}

trnmpa_result trnmpa_index_build_utf16(const uint16_t* path, trnmpa_progress_function progress, void* user,
                                       trnmpa_index_progress* result) noexcept {
    return Build(path, progress, user, result);
}
