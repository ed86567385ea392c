/// Random access to the bytes of a HeaderSource near a place that moves forward.
#pragma once

#include "mpa/header_source.h"

#include <vector>

namespace trnmpa {

/// Keeps one stretch of the source in memory, so that a search which looks at every byte, or forth and back
/// within a few thousand bytes, reads each part of the file once. The source's position is left anywhere.
class SourceWindow {
public:
    static constexpr std::size_t kBytes = 64 * 1024;

    explicit SourceWindow(HeaderSource& source);

    /// The `count` bytes at `offset` (at most kBytes), fewer where the data end; valid until the next call.
    std::span<const std::uint8_t> At(std::int64_t offset, std::size_t count);

private:
    bool Holds(std::int64_t offset, std::size_t count) const;
    void Fill(std::int64_t offset);

    HeaderSource& source_;
    std::vector<std::uint8_t> bytes_;
    std::int64_t start_ = 0;
    std::size_t filled_ = 0;
    bool endsAtEnd_ = false; ///< nothing follows the window
};

} // namespace trnmpa
