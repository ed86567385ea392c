#include "mpatool/index/index_progress.h"

#include "index/index_format.h"
#include "mpatool/output/count_text.h"
#include "os/file.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>

namespace mpatool {

namespace {

double Fraction(const IndexProgress& progress) {
    const double fraction = static_cast<double>(progress.doneBytes) /
                            static_cast<double>(std::max<std::int64_t>(progress.totalBytes, 1));
    return std::clamp(fraction, 0.0, 1.0);
}

std::string Figures(const IndexProgress& progress) {
    char percent[16];
    std::snprintf(percent, sizeof percent, "%3d%%", static_cast<int>(Fraction(progress) * 100));
    std::string text = std::string(percent) + "  " + CountOf(progress.frames, "frame");
    if (progress.elapsedSeconds >= 0.001) {
        char speed[48];
        std::snprintf(speed, sizeof speed, "  %.1f MB/s",
                      static_cast<double>(progress.doneBytes) / 1e6 / progress.elapsedSeconds);
        text += speed;
    }
    if (progress.totalFiles > 1)
        text +=
            "  " + std::to_string(progress.doneFiles) + "/" + std::to_string(progress.totalFiles) + " files";
    return text;
}

} // namespace

std::string FormatIndexProgress(const IndexProgress& progress, int columns) {
    return WithBar(Fraction(progress), Figures(progress), columns);
}

std::int64_t IndexedBytes(const std::wstring& path) {
    constexpr auto kHeader = static_cast<std::int64_t>(trnmpa::kIndexHeaderBytes);
    constexpr auto kEntry = static_cast<std::int64_t>(trnmpa::kIndexEntryBytes);
    os::File file;
    if (!file.Open(path))
        return 0;
    const std::int64_t entries = (file.Length() - kHeader) / kEntry;
    std::array<std::uint8_t, trnmpa::kIndexEntryBytes> bytes = {};
    if (entries <= 0 || file.ReadAt(kHeader + (entries - 1) * kEntry, bytes) != bytes.size())
        return 0;
    const trnmpa::MpaIndexEntry last = trnmpa::ParseIndexEntry(bytes);
    return std::int64_t{last.frameOffset} + last.frameBytes;
}

std::int64_t MediaBytes(const std::wstring& path) {
    os::File file;
    return file.Open(path) ? file.Length() : 0;
}

std::int64_t BytesToIndex(const std::wstring& path) {
    constexpr std::int64_t kMost = std::numeric_limits<std::uint32_t>::max();
    return std::min(MediaBytes(path), kMost);
}

void IndexProgressBar::Draw(IndexProgress progress) {
    progress.elapsedSeconds = line_.ElapsedSeconds();
    line_.Draw(FormatIndexProgress(progress, line_.Columns()));
}

} // namespace mpatool
