#include "mpatool/index/index_compare.h"

#include "mpatool/output/tool_error.h"
#include "os/console.h"

namespace mpatool {

IndexCompare::IndexCompare(const std::wstring& path) : scan_(media_) {
    if (media_.Open(path) != 1)
        throw ToolError(path, "cannot be opened");
    // What an index can say of a place.
    constexpr std::int64_t kIndexedBytes = std::int64_t{1} << 32;
    trnmpa::MpaIndexHeader format;
    hasIndex_ = media_.GetLength() < kIndexedBytes && scan_.Start(format);
    if (hasIndex_)
        Advance();
    begin_ = next_ ? next_->frameOffset : media_.GetLength();
}

void IndexCompare::Advance() {
    if (os::InterruptRequested())
        throw Interrupted();
    next_ = scan_.Next();
    deliveredAtEnd_ = delivered_;
}

void IndexCompare::Differ(std::int64_t offset, std::int64_t& count) {
    ++count;
    if (!firstDifference_)
        firstDifference_ = Place{offset, delivered_};
}

/// Goes on behind an entry that is not delivered.
void IndexCompare::SkipEntry() {
    if (std::int64_t{next_->frameOffset} + next_->frameBytes <= media_.GetLength())
        Differ(next_->frameOffset, listedOnly_);
    Advance();
}

void IndexCompare::AddDelivered(std::int64_t offset) {
    if (hasIndex_ && offset >= begin_) {
        while (next_ && next_->frameOffset < offset)
            SkipEntry();
        const bool isListed = next_ && next_->frameOffset == offset;
        if (!isListed)
            Differ(offset, deliveredOnly_);
        ++delivered_;
        if (isListed)
            Advance();
        return;
    }
    ++delivered_;
}

void IndexCompare::Finish() {
    while (next_)
        SkipEntry();
}

std::optional<IndexCompare::Place> IndexCompare::End() const {
    return hasIndex_ ? std::optional(Place{scan_.Position(), deliveredAtEnd_}) : std::nullopt;
}

} // namespace mpatool
