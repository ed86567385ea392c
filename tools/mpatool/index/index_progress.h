/// The progress bar of building and checking indexes.
#pragma once

#include "mpatool/output/progress_line.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace mpatool {

/// How far a run over one or several media files is.
struct IndexProgress {
    std::int64_t doneBytes = 0;
    std::int64_t totalBytes = 0;
    std::int64_t frames = 0;
    std::size_t doneFiles = 0;
    std::size_t totalFiles = 1;
    double elapsedSeconds = 0;
};

/// One line of at most `columns` characters: "[=====>    ]  52%  2,498 frames  812.0 MB/s  3/12 files". The
/// speed comes with the first measurable moment, the files when there are several.
std::string FormatIndexProgress(const IndexProgress& progress, int columns);

/// How far into its media file the unfinished index at `path` has come, in bytes: the end of the last frame
/// that it lists; 0 when it lists none yet.
std::int64_t IndexedBytes(const std::wstring& path);

/// The length of a file in bytes, 0 when it cannot be read.
std::int64_t MediaBytes(const std::wstring& path);

/// What a file adds to `totalBytes`: its length, as far as an index can describe it.
std::int64_t BytesToIndex(const std::wstring& path);

class IndexProgressBar {
public:
    /// False when nothing is drawn anyway, or not yet again.
    bool IsDue() const { return line_.IsDue(); }
    void Draw(IndexProgress progress);
    /// Makes room for other output.
    void Clear() { line_.Clear(); }

private:
    ProgressLine line_;
};

} // namespace mpatool
