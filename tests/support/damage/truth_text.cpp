#include "support/damage/truth_text.h"

namespace test {

namespace {

std::string KindText(const Piece& piece) {
    switch (piece.kind) {
    case PieceKind::kFrame:
        return "whole";
    case PieceKind::kSpoiledFrame:
        return std::string("spoiled") + (piece.isHeaderChanged ? " header" : "") +
               (piece.isCrcWordChanged ? " CRC" : "") + (piece.isSideInfoChanged ? " side information" : "");
    case PieceKind::kPartOfFrame:
        return "part, from byte " + std::to_string(piece.place);
    case PieceKind::kJunk:
        break;
    }
    return "junk";
}

std::string Line(const Piece& first, const Piece& last) {
    std::string line = std::to_string(first.offset) + " " + std::to_string(last.End() - first.offset) + " ";
    line += KindText(first);
    if (first.kind == PieceKind::kJunk)
        return line + "\n";
    line += ", frame " + std::to_string(first.frame);
    if (last.frame != first.frame)
        line += " to " + std::to_string(last.frame);
    return line + (first.stream == 0 ? "\n" : " of the other stream\n");
}

bool FollowsWhole(const Piece& before, const Piece& piece) {
    return before.IsWhole() && piece.IsWhole() && before.stream == piece.stream &&
           before.frame + 1 == piece.frame;
}

} // namespace

std::string TruthText(const DamagedFile& file) {
    std::string text;
    const auto pieces = file.Pieces();
    std::size_t first = 0;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (i + 1 < pieces.size() && FollowsWhole(pieces[i], pieces[i + 1]))
            continue;
        text += Line(pieces[first], pieces[i]);
        first = i + 1;
    }
    return text;
}

} // namespace test
