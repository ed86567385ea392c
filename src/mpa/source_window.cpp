#include "mpa/source_window.h"

#include <algorithm>

namespace trnmpa {

SourceWindow::SourceWindow(HeaderSource& source) : source_(source), bytes_(kBytes) {}

bool SourceWindow::Holds(std::int64_t offset, std::size_t count) const {
    if (offset < start_)
        return false;
    if (endsAtEnd_)
        return true;
    const auto skipped = static_cast<std::uint64_t>(offset - start_);
    return skipped <= filled_ && count <= filled_ - skipped;
}

void SourceWindow::Fill(std::int64_t offset) {
    start_ = offset;
    filled_ = source_.SetPosition(offset) ? source_.Read(bytes_) : 0;
    endsAtEnd_ = filled_ < bytes_.size();
}

std::span<const std::uint8_t> SourceWindow::At(std::int64_t offset, std::size_t count) {
    if (offset < 0)
        return {};
    if (!Holds(offset, count))
        Fill(offset);
    const std::uint64_t skipped =
        std::min<std::uint64_t>(static_cast<std::uint64_t>(offset - start_), filled_);
    const auto held = std::span<const std::uint8_t>(bytes_).subspan(
        static_cast<std::size_t>(skipped), filled_ - static_cast<std::size_t>(skipped));
    return held.first(std::min(count, held.size()));
}

} // namespace trnmpa
