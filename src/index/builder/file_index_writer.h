/// The engine that builds an index.
#pragma once

#include "fileio/file_reader.h"
#include "fileio/file_writer.h"
#include "index/builder/frame_scan.h"
#include "index/builder/scan_gate.h"
#include "index/index_format.h"
#include "plugin/engine_users.h"
#include "trnmpafileread/index_creator.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace trnmpa {

/// How far a scan has come.
struct IndexScanProgress {
    std::uint32_t frames = 0; ///< entries so far
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesTotal = 0; ///< length of the media file
};

/// Scans one media file and writes its index; TRN_MpaFileIndexCreator tells what its operations do. Results
/// are 1 or 0. GetFileIdxingProgress and CancelIndexing may be called from any thread.
class KwMpaFileIndexWriter : public SharedEngine {
public:
    KwMpaFileIndexWriter() = default;
    virtual ~KwMpaFileIndexWriter() = default;
    KwMpaFileIndexWriter(const KwMpaFileIndexWriter&) = delete;
    KwMpaFileIndexWriter& operator=(const KwMpaFileIndexWriter&) = delete;

    std::int32_t Initialize();
    /// The header is zeroed by Initialize alone: a second file opened on one engine starts with the first
    /// one's header and counts on from it.
    std::int32_t SetInputFile(const std::wstring& mediaPath);
    /// The same with an index of another name.
    std::int32_t SetInputFile(const std::wstring& mediaPath, const std::wstring& indexPath);

    /// Has the next scans report: at the beginning, after every kFramesPerReport frames and at the end, on
    /// the thread that scans. False cancels.
    using Watcher = std::function<bool(const IndexScanProgress& progress)>;
    static constexpr std::uint32_t kFramesPerReport = 100;
    void SetWatcher(Watcher watcher) { watcher_ = std::move(watcher); }

    std::int32_t CreateFileIndex();
    std::int32_t GetFileIdxingProgress(PROGRESS_INFO& progress) const;
    std::int32_t CancelIndexing();

private:
    /// The file's length, if an index can describe it.
    std::optional<std::uint32_t> OpenMedia(const std::wstring& mediaPath);
    bool OpenIndex(const std::wstring& mediaPath);
    void Scan();
    bool ScanFrames();
    bool Append(const MpaIndexEntry& entry);
    bool Flush();
    bool RewriteHeader(const MpaIndexHeader& header);
    bool WriteHeader(const MpaIndexHeader& header);
    void ReportFrame(const MpaIndexEntry& entry);
    void AskWatcher(std::uint64_t bytesDone);
    template <typename Step>
    void FailingOnThrow(Step&& step) noexcept;
    void Fail();

    std::wstring indexPath_;
    Watcher watcher_;
    ScanGate gate_;
    std::atomic<std::uint32_t> percent_ = 0;
    std::atomic<std::uint32_t> framesIndexed_ = 0;
    std::atomic<std::uint32_t> state_ = TRN_INDEX_RUNNING;
    std::unique_ptr<CFileReader> media_;
    std::unique_ptr<CFileWriter> index_;
    MpaIndexHeader header_;
    std::optional<FrameScan> scan_;       ///< stands behind the first frame; only when a file is ready
    std::vector<std::uint8_t> unwritten_; ///< entries on their way to the file
};

} // namespace trnmpa
