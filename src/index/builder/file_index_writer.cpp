#include "index/builder/file_index_writer.h"

#include "os/output_file.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace trnmpa {

namespace {

constexpr std::size_t kWriteBytes = 32 * 1024;

/// In 32 bits, as hosts have always been told: it wraps for media files of more than 42,949,672 bytes.
std::uint32_t Percent(std::uint32_t end, std::uint32_t mediaFileSize) {
    return mediaFileSize != 0 ? end * 100 / mediaFileSize : 100;
}

} // namespace

std::int32_t KwMpaFileIndexWriter::Initialize() {
    scan_.reset();
    media_.reset();
    index_.reset();
    unwritten_.clear();
    auto media = std::make_unique<CFileReader>();
    index_ = std::make_unique<CFileWriter>();
    media_ = std::move(media);
    header_ = {};
    percent_ = 0;
    framesIndexed_ = 0;
    state_ = TRN_INDEX_RUNNING;
    gate_.Open();
    return 1;
}

std::int32_t KwMpaFileIndexWriter::SetInputFile(const std::wstring& mediaPath) {
    return SetInputFile(mediaPath, IndexPathFor(mediaPath));
}

std::int32_t KwMpaFileIndexWriter::SetInputFile(const std::wstring& mediaPath,
                                                const std::wstring& indexPath) {
    if (media_ == nullptr || index_ == nullptr)
        return 0;
    scan_.reset();
    indexPath_ = mediaPath;
    const auto mediaBytes = OpenMedia(mediaPath);
    if (!mediaBytes)
        return 0;
    indexPath_ = indexPath;
    if (!OpenIndex(mediaPath))
        return 0;
    header_.mediaFileSize = *mediaBytes;
    scan_.emplace(*media_);
    // A length that the system did not tell would end the scan at its first frame.
    if (scan_->Start(header_) && header_.mediaFileSize != 0)
        return 1;
    scan_.reset();
    return 0;
}

std::optional<std::uint32_t> KwMpaFileIndexWriter::OpenMedia(const std::wstring& mediaPath) {
    if (TRCT_FileExists(os::ToAutomationString(mediaPath)) == 0 || media_->Open(mediaPath) <= 0)
        return std::nullopt;
    const std::int64_t bytes = media_->GetLength();
    // An index has 32-bit offsets; what it cannot describe must not cost the file's present index.
    if (bytes > std::numeric_limits<std::uint32_t>::max())
        return std::nullopt;
    return static_cast<std::uint32_t>(bytes);
}

bool KwMpaFileIndexWriter::OpenIndex(const std::wstring& mediaPath) {
    unwritten_.clear();
    // A link from one name to the other would have the media file emptied.
    return !os::IsSameFile(mediaPath, indexPath_) && index_->Open(indexPath_) > 0 && WriteHeader(header_);
}

std::int32_t KwMpaFileIndexWriter::CreateFileIndex() {
    if (media_ == nullptr || index_ == nullptr)
        return 0;
    gate_.Enter();
    // Each by itself: whoever cancels waits until both files are closed, whatever went wrong before.
    FailingOnThrow([this] { Scan(); });
    FailingOnThrow([this] { index_->Close(); });
    FailingOnThrow([this] { media_->Close(); });
    scan_.reset();
    gate_.Leave();
    return 1;
}

void KwMpaFileIndexWriter::Scan() {
    // The entries must have arrived before the header says that they are there.
    if (!scan_ || !ScanFrames() || !Flush())
        return Fail();
    if (gate_.StopRequested())
        return;
    if (!RewriteHeader(header_)) {
        // A part of it may have arrived.
        RewriteHeader({});
        return Fail();
    }
    state_ = TRN_INDEX_FINISHED;
}

bool KwMpaFileIndexWriter::ScanFrames() {
    AskWatcher(0);
    while (!gate_.StopRequested()) {
        const auto entry = scan_->Next();
        if (!entry) {
            percent_ = 100;
            AskWatcher(header_.mediaFileSize);
            return true;
        }
        if (!Append(*entry))
            return false;
        ++header_.frameCount;
        ReportFrame(*entry);
        const std::uint64_t end = std::uint64_t{entry->frameOffset} + entry->frameBytes;
        const bool isLast = end >= header_.mediaFileSize;
        if (isLast || header_.frameCount % kFramesPerReport == 0)
            AskWatcher(std::min<std::uint64_t>(end, header_.mediaFileSize));
        if (isLast)
            return true;
    }
    return true;
}

bool KwMpaFileIndexWriter::Append(const MpaIndexEntry& entry) {
    const auto bytes = FormatIndexEntry(entry);
    unwritten_.insert(unwritten_.end(), bytes.begin(), bytes.end());
    return unwritten_.size() < kWriteBytes || Flush();
}

bool KwMpaFileIndexWriter::Flush() {
    const auto bytes = static_cast<std::uint32_t>(unwritten_.size());
    const bool written = bytes == 0 || index_->Write(unwritten_.data(), bytes) != 0;
    unwritten_.clear();
    return written;
}

bool KwMpaFileIndexWriter::RewriteHeader(const MpaIndexHeader& header) {
    return index_->SetPosition(0) != 0 && WriteHeader(header);
}

bool KwMpaFileIndexWriter::WriteHeader(const MpaIndexHeader& header) {
    const auto bytes = FormatIndexHeader(header);
    return index_->Write(bytes.data(), static_cast<std::uint32_t>(bytes.size())) != 0;
}

void KwMpaFileIndexWriter::ReportFrame(const MpaIndexEntry& entry) {
    percent_.store(Percent(entry.frameOffset + entry.frameBytes, header_.mediaFileSize),
                   std::memory_order_relaxed);
    framesIndexed_.store(header_.frameCount, std::memory_order_relaxed);
    state_.store(TRN_INDEX_RUNNING, std::memory_order_relaxed);
}

void KwMpaFileIndexWriter::AskWatcher(std::uint64_t bytesDone) {
    if (watcher_ == nullptr || watcher_({header_.frameCount, bytesDone, header_.mediaFileSize}))
        return;
    gate_.RequestStop();
    state_ = TRN_INDEX_CANCELLED;
}

template <typename Step>
void KwMpaFileIndexWriter::FailingOnThrow(Step&& step) noexcept {
    try {
        step();
    } catch (...) {
        Fail();
    }
}

void KwMpaFileIndexWriter::Fail() {
    state_ = TRN_INDEX_FAILED;
    gate_.RequestStop();
}

std::int32_t KwMpaFileIndexWriter::GetFileIdxingProgress(PROGRESS_INFO& progress) const {
    progress = {};
    progress.percent = percent_.load(std::memory_order_relaxed);
    progress.framesIndexed = framesIndexed_.load(std::memory_order_relaxed);
    progress.state = state_;
    return 1;
}

std::int32_t KwMpaFileIndexWriter::CancelIndexing() {
    gate_.CancelAndClose([this] { state_ = TRN_INDEX_CANCELLED; });
    return 1;
}

} // namespace trnmpa
