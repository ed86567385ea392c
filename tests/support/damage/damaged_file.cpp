#include "support/damage/damaged_file.h"

#include <algorithm>
#include <stdexcept>

namespace test {

namespace {

template <typename Container>
auto At(Container& container, std::size_t offset) {
    return container.begin() + static_cast<std::ptrdiff_t>(std::min(offset, container.size()));
}

} // namespace

DamagedFile::DamagedFile(const CleanStream& stream) {
    Append(stream, 0, 0);
}

void DamagedFile::Append(const CleanStream& stream, int number, std::size_t from) {
    frames_[number] = stream.frames;
    for (std::size_t frame = 0; frame < stream.frames.size(); ++frame) {
        const CleanFrame& place = stream.frames[frame];
        for (std::size_t i = place.offset; i < place.offset + place.length; ++i) {
            if (i < from)
                continue;
            bytes_.push_back(stream.bytes.at(i));
            origins_.push_back({number, static_cast<std::int32_t>(frame),
                                static_cast<std::int32_t>(i - place.offset), false});
        }
    }
}

void DamagedFile::FlipBit(std::size_t byte, int bit) {
    bytes_.at(byte) = static_cast<std::uint8_t>(bytes_.at(byte) ^ 1 << bit);
    origins_.at(byte).isChanged = true;
}

void DamagedFile::Insert(std::size_t offset, std::span<const std::uint8_t> junk) {
    bytes_.insert(At(bytes_, offset), junk.begin(), junk.end());
    origins_.insert(At(origins_, offset), junk.size(), Origin());
}

void DamagedFile::Remove(std::size_t begin, std::size_t end) {
    bytes_.erase(At(bytes_, begin), At(bytes_, end));
    origins_.erase(At(origins_, begin), At(origins_, end));
}

void DamagedFile::Splice(std::size_t kept, const CleanStream& other, std::size_t from) {
    if (!frames_[1].empty())
        throw std::logic_error("spliced twice");
    Remove(kept, Size());
    Append(other, 1, from);
}

bool DamagedFile::GoesOn(const Origin& before, const Origin& byte) const {
    if (before.stream < 0 || byte.stream < 0)
        return before.stream == byte.stream;
    return before.stream == byte.stream && before.frame == byte.frame && before.place + 1 == byte.place;
}

std::vector<Piece> DamagedFile::Pieces() const {
    std::vector<Piece> pieces;
    for (std::size_t i = 0; i < origins_.size(); ++i) {
        if (i > 0 && GoesOn(origins_[i - 1], origins_[i])) {
            ++pieces.back().length;
            continue;
        }
        Piece piece;
        piece.offset = i;
        piece.length = 1;
        if (origins_[i].stream >= 0) {
            piece.kind = PieceKind::kPartOfFrame;
            piece.stream = origins_[i].stream;
            piece.frame = static_cast<std::size_t>(origins_[i].frame);
            piece.place = static_cast<std::size_t>(origins_[i].place);
        }
        pieces.push_back(piece);
    }
    for (Piece& piece : pieces)
        Describe(piece);
    return pieces;
}

void DamagedFile::Describe(Piece& piece) const {
    if (piece.kind == PieceKind::kJunk)
        return;
    const CleanFrame& frame = FrameOf(piece);
    const std::size_t head = frame.header.crc ? 6 : 4;
    const std::size_t mainData =
        head + (frame.header.layer == 3 ? static_cast<std::size_t>(frame.header.SideInfoBytes()) : 0);
    bool isChanged = false;
    bool isRestChanged = false;
    for (std::size_t i = 0; i < piece.length; ++i) {
        if (!origins_[piece.offset + i].isChanged)
            continue;
        const std::size_t place = piece.place + i;
        isChanged = true;
        piece.isHeaderChanged |= place < 4;
        piece.isCrcWordChanged |= place >= 4 && place < head;
        piece.isSideInfoChanged |= place >= head && place < mainData;
        isRestChanged |= place < 4 || place >= head;
    }
    piece.isOnlyCrcChanged = piece.isCrcWordChanged && !isRestChanged;
    if (piece.place == 0 && piece.length == frame.length)
        piece.kind = isChanged ? PieceKind::kSpoiledFrame : PieceKind::kFrame;
}

const CleanFrame& DamagedFile::FrameOf(const Piece& piece) const {
    return frames_[piece.stream].at(piece.frame);
}

} // namespace test
