/// The index builder as a class that host code links against: `TRN_MpaFileIndexCreator`.
///
///     TRN_MpaFileIndexCreator creator;
///     creator.Initialize();
///     if (creator.SetInputFile(L"song.mp3") == 1)
///         creator.CreateFileIndex(); // runs on this thread
///     PROGRESS_INFO progress = {};
///     creator.GetFileIdxingProgress(progress);
///     // progress.state is 1: "song.mp3.idx" is complete.
///
/// The index is beside the media file, under its full name with ".idx" appended, and replaces an earlier one.
/// Results are 32-bit integers, 1 for success and 0 for failure. Nothing is thrown.
///
/// Threads: Initialize, SetInputFile, CreateFileIndex and destruction belong to one thread.
/// GetFileIdxingProgress and CancelIndexing may be called from any other thread at any time in between, on
/// the same object or on a copy; an object must live as long as another thread uses it.
#pragma once

#include "os/automation_string.h"
#include "trnmpafileread/export.h"

#include <cstdint>

namespace trnmpa {
class KwMpaFileIndexWriter;
}

/// Progress of the index builder, 40 bytes.
struct PROGRESS_INFO {
    /// The end of the last frame as a percentage of the file, so that a last frame that is cut off may give
    /// more than 100; 100 if the search after it found no more frames. Computed in 32 bits: meaningless, at
    /// the end too, for media files of more than 42,949,672 bytes. Go by `state`.
    std::uint32_t percent;
    std::uint32_t framesIndexed; ///< entries so far
    unsigned char reserved[24];  ///< zeros
    std::uint32_t state;         ///< 0 running or not started, 1 finished, 2 failed, 3 cancelled
    std::uint32_t padding;       ///< zero
};
static_assert(sizeof(PROGRESS_INFO) == 40);

/// States in PROGRESS_INFO. A run that was cancelled while it ran may end with TRN_INDEX_RUNNING.
inline constexpr std::uint32_t TRN_INDEX_RUNNING = 0;
inline constexpr std::uint32_t TRN_INDEX_FINISHED = 1;
inline constexpr std::uint32_t TRN_INDEX_FAILED = 2;
inline constexpr std::uint32_t TRN_INDEX_CANCELLED = 3;

/// Builds the index of one media file at a time. Copies share one builder, which lives as long as one of them
/// holds it.
class TRN_EXPORT TRN_MpaFileIndexCreator {
public:
    TRN_MpaFileIndexCreator();
    TRN_MpaFileIndexCreator(const TRN_MpaFileIndexCreator& other);            ///< shares the builder
    TRN_MpaFileIndexCreator& operator=(const TRN_MpaFileIndexCreator& other); ///< releases its own builder
    virtual ~TRN_MpaFileIndexCreator();

    /// Releases an earlier builder and creates a new one. Call it once before each file. 0 only when memory
    /// runs out.
    std::int32_t Initialize();

    /// Opens the media file `path`, empties or creates its index, writes a placeholder header there (all
    /// zeros) and finds the first frame. 0 before Initialize, if the media file cannot be opened, is 4 GiB or
    /// longer or holds no frame where one is looked for, or if the index cannot be written; an index that was
    /// emptied by then stays empty, and both files stay open until the next Initialize or destruction.
    std::int32_t SetInputFile(CComBSTR path);

    /// Runs the whole scan on this thread and closes both files. 0 before Initialize; otherwise 1, whether
    /// the run finished, failed or was cancelled: GetFileIdxingProgress says which. Only a finished run
    /// leaves a complete index; any other leaves its entries after a placeholder header. Call it once for
    /// each SetInputFile: a further call changes no file and ends with state 2.
    std::int32_t CreateFileIndex();

    /// Copies the progress of the run to `progress`; its numbers may belong to two neighbouring frames. 0
    /// before Initialize.
    std::int32_t GetFileIdxingProgress(PROGRESS_INFO& progress);

    /// Asks the running scan to stop and waits until it has closed its files. 1, at once when no scan runs; 0
    /// before Initialize. Call it once for each Initialize: further calls request the cancellation but do not
    /// wait. A scan that is started later is not stopped by it.
    std::int32_t CancelIndexing();

private:
    trnmpa::KwMpaFileIndexWriter* engine_ = nullptr;
};
