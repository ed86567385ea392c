/// A file that is damaged step by step and knows the truth about every byte of it.
#pragma once

#include "support/damage/clean_stream.h"
#include "support/test_files.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace test {

enum class PieceKind {
    kFrame,        ///< a whole frame, every byte as it was
    kSpoiledFrame, ///< all bytes of a frame in a row, some of them changed
    kPartOfFrame,  ///< some bytes of a frame in a row, the others are gone or lie elsewhere
    kJunk,         ///< bytes of no stream
};

/// Bytes of the file that belong together.
struct Piece {
    PieceKind kind = PieceKind::kJunk;
    std::size_t offset = 0; ///< in the damaged file
    std::size_t length = 0;
    int stream = 0;                 ///< 0, or 1 for the stream spliced on
    std::size_t frame = 0;          ///< number of the frame in that stream
    std::size_t place = 0;          ///< of the piece's first byte in that frame
    bool isHeaderChanged = false;   ///< a byte of the four is another one
    bool isCrcWordChanged = false;  ///< in a protected frame
    bool isOnlyCrcChanged = false;  ///< nothing else is
    bool isSideInfoChanged = false; ///< Layer III: bytes behind header and CRC word, up to the main data

    std::size_t End() const { return offset + length; }
    bool IsWhole() const { return kind == PieceKind::kFrame; }
};

class DamagedFile {
public:
    explicit DamagedFile(const CleanStream& stream);

    const Bytes& Content() const { return bytes_; }
    std::size_t Size() const { return bytes_.size(); }

    /// What the file consists of now, from its first byte to its last.
    std::vector<Piece> Pieces() const;
    const CleanFrame& FrameOf(const Piece& piece) const;

    void FlipBit(std::size_t byte, int bit);
    void Insert(std::size_t offset, std::span<const std::uint8_t> junk);
    /// Takes out the bytes from `begin` up to `end`.
    void Remove(std::size_t begin, std::size_t end);
    /// Keeps the first `kept` bytes and goes on with those of `other` from `from` on. Once.
    void Splice(std::size_t kept, const CleanStream& other, std::size_t from);

private:
    struct Origin {
        std::int32_t stream = -1; ///< -1: of none
        std::int32_t frame = 0;
        std::int32_t place = 0; ///< in the frame
        bool isChanged = false;
    };

    void Append(const CleanStream& stream, int number, std::size_t from);
    bool GoesOn(const Origin& before, const Origin& byte) const;
    void Describe(Piece& piece) const;

    Bytes bytes_;
    std::vector<Origin> origins_; ///< one a byte
    std::vector<CleanFrame> frames_[2];
};

} // namespace test
