#include "reader/damage_truth.h"

#include <algorithm>

namespace test {

namespace {

/// What a search took, the first frame of an index included.
struct Found {
    std::size_t searchedFrom = 0;
    std::size_t offset = 0;
    std::size_t taken = 0;

    bool Covers(std::size_t place) const { return offset < place && place < offset + taken; }
};

std::string Say(const std::string& what, std::size_t offset) {
    return what + " at byte " + std::to_string(offset);
}

bool HasFormatOf(const model::Header& header, const model::Header& format) {
    return header.lsf == format.lsf && header.layer == format.layer &&
           header.sampleRate == format.sampleRate && header.channels == format.channels;
}

/// Begins within something that is no whole frame.
bool IsHidden(const Truth& truth, const std::vector<Found>& found, std::size_t offset) {
    return std::ranges::any_of(found, [&](const Found& item) {
        const Piece& piece = truth.At(item.offset);
        return item.Covers(offset) && !(piece.IsWhole() && piece.offset == item.offset);
    });
}

/// A search stopped there though no whole frame begins there. It must not lie in a whole frame, unless the
/// search began in the middle of that or stepped over its header, as `isSteppedOver` says of a header.
template <typename Predicate>
bool IsFalseSync(const Truth& truth, const Found& item, Predicate isSteppedOver) {
    const Piece& piece = truth.At(item.offset);
    return !piece.IsWhole() || item.searchedFrom > piece.offset || isSteppedOver(truth.FrameOf(piece).header);
}

/// May lie before the place where reading begins.
bool MayBePassedAtTheStart(const Truth& truth, const Piece& piece, const ReadingModel& reading) {
    const model::Header& header = truth.FrameOf(piece).header;
    if (header.layer == 2 || header.mpeg25)
        return true;
    if (!reading.opens)
        return piece.offset > 0;
    // An encoder's frame, or one that begins within what was taken for such.
    return piece.offset >= reading.first;
}

} // namespace

const Piece& Truth::At(std::size_t offset) const {
    const auto behind = std::ranges::upper_bound(pieces_, offset, {}, &Piece::offset);
    return *(behind - 1);
}

bool Truth::IsWholeFrame(std::size_t offset, std::size_t length) const {
    const Piece& piece = At(offset);
    return piece.IsWhole() && piece.offset == offset && piece.length == length;
}

std::string UnexplainedReading(const Truth& truth, const ReadingModel& reading) {
    const auto isForeign = [&](const model::Header& header) { return !HasFormatOf(header, reading.format); };
    std::vector<Found> found;
    std::vector<std::size_t> delivered;
    for (const TakenFrame& frame : reading.frames) {
        const Found item = {frame.searchedFrom, frame.offset, frame.taken};
        found.push_back(item);
        if (frame.isDelivered)
            delivered.push_back(frame.offset);
        if (frame.isDelivered && !truth.IsWholeFrame(frame.offset, frame.taken) &&
            !IsFalseSync(truth, item, isForeign))
            return Say("delivered without reason", frame.offset);
    }
    if (reading.cutFrame)
        found.push_back({0, *reading.cutFrame, std::string::npos - *reading.cutFrame});
    for (const Piece& piece : truth.Pieces()) {
        if (!reading.opens || !piece.IsWhole() || piece.offset < reading.start)
            continue;
        const bool isExplained = std::ranges::binary_search(delivered, piece.offset) ||
                                 isForeign(truth.FrameOf(piece).header) ||
                                 IsHidden(truth, found, piece.offset);
        if (!isExplained)
            return Say("whole frame not delivered", piece.offset);
    }
    return {};
}

std::string UnexplainedStart(const Truth& truth, const ReadingModel& reading) {
    for (const Piece& piece : truth.Pieces()) {
        if (!piece.IsWhole() || (reading.opens && piece.offset >= reading.start))
            continue;
        if (!MayBePassedAtTheStart(truth, piece, reading))
            return Say("whole frame not delivered", piece.offset);
    }
    return {};
}

std::string UnexplainedIndex(const Truth& truth, std::size_t fileBytes,
                             const std::vector<trnmpa::MpaIndexEntry>& entries) {
    constexpr std::size_t kSearchLimit = 4096;
    if (entries.empty())
        return {};
    std::vector<Found> found;
    for (const trnmpa::MpaIndexEntry& entry : entries) {
        const std::size_t from = found.empty() ? 0 : found.back().offset + found.back().taken;
        found.push_back({from, entry.frameOffset, entry.frameBytes});
        // Before the first entry lies the first frame, which is not known here.
        const Piece& piece = truth.At(entry.frameOffset);
        const bool isFrame = piece.IsWhole() && piece.offset == entry.frameOffset;
        if (found.size() > 1 && !isFrame &&
            !IsFalseSync(truth, found.back(), [](const model::Header& header) { return header.mpeg25; }))
            return Say("listed without reason", entry.frameOffset);
    }
    const std::size_t end = found.back().offset + found.back().taken;
    for (const Piece& piece : truth.Pieces()) {
        if (!piece.IsWhole() || piece.offset < found.front().offset)
            continue;
        const bool isListed =
            std::ranges::any_of(found, [&](const Found& item) { return item.offset == piece.offset; });
        const bool isBehindTheEnd = piece.offset > end + kSearchLimit || end >= fileBytes;
        const bool isAtAnEnd = std::ranges::any_of(
            found, [&](const Found& item) { return item.offset + item.taken == piece.offset; });
        const bool isSteppedOver = truth.FrameOf(piece).header.mpeg25 && !isAtAnEnd;
        if (!isListed && !isBehindTheEnd && !isSteppedOver && !IsHidden(truth, found, piece.offset))
            return Say("whole frame not listed", piece.offset);
    }
    return {};
}

} // namespace test
