#include "support/damage/damage.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace test {

namespace {

using bitstream::Random;

constexpr std::array<const char*, std::size(kDamageKinds)> kNames = {"flips", "cut", "splice",
                                                                     "junk",  "crc", "missing"};

std::size_t Place(Random& random, std::size_t size) {
    return static_cast<std::size_t>(random.Below(static_cast<int>(size)));
}

/// Where pieces begin that hold a frame's header.
std::vector<Piece> FramesOf(const DamagedFile& file) {
    std::vector<Piece> frames = file.Pieces();
    std::erase_if(frames,
                  [](const Piece& piece) { return piece.kind == PieceKind::kJunk || piece.place != 0; });
    return frames;
}

/// The start of a frame, or any byte.
std::size_t DrawPlace(const DamagedFile& file, Random& random) {
    const auto frames = FramesOf(file);
    return frames.empty() || random.Chance(40) ? Place(random, file.Size())
                                               : frames[Place(random, frames.size())].offset;
}

/// 1 to `most`, small numbers as likely as great ones.
std::size_t DrawLength(Random& random, int most) {
    int limit = 1;
    while (limit < most && random.Chance(85))
        limit *= 2;
    return static_cast<std::size_t>(random.Between(1, std::min(limit, most)));
}

void FlipOneBit(DamagedFile& file, std::size_t byte, Random& random) {
    file.FlipBit(byte, random.Below(8));
}

void FlipBits(DamagedFile& file, Random& random) {
    const bool isBurst = random.Chance(30);
    const std::size_t start = Place(random, file.Size());
    for (int flips = random.Between(1, isBurst ? 60 : 6); flips > 0; --flips) {
        const std::size_t near = start + Place(random, 20);
        FlipOneBit(file, isBurst ? std::min(near, file.Size() - 1) : Place(random, file.Size()), random);
    }
}

/// Flips a bit of a header: rare by chance alone, and what matters most.
void FlipHeaderBit(DamagedFile& file, Random& random) {
    const auto frames = FramesOf(file);
    if (frames.empty())
        return;
    const Piece frame = random.Pick(frames);
    FlipOneBit(file, frame.offset + Place(random, 4) % frame.length, random);
}

void Cut(DamagedFile& file, Random& random) {
    const std::size_t length = DrawLength(random, 3000);
    const std::size_t begin = random.Chance(20)   ? 0
                              : random.Chance(25) ? file.Size() - std::min(length, file.Size())
                                                  : DrawPlace(file, random);
    file.Remove(begin, begin + length);
}

void SpliceOn(DamagedFile& file, const CleanStream& other, Random& random) {
    const bool fromFrame = random.Chance(50);
    const std::size_t from = fromFrame ? random.Pick(other.frames).offset : Place(random, other.bytes.size());
    file.Splice(DrawPlace(file, random), other, from);
}

void SpoilCrcs(DamagedFile& file, Random& random) {
    for (const Piece& piece : FramesOf(file))
        if (piece.length >= 6 && file.FrameOf(piece).header.crc && random.Chance(20))
            FlipOneBit(file, piece.offset + 4 + Place(random, 2), random);
}

void LoseFrames(DamagedFile& file, Random& random) {
    const auto frames = FramesOf(file);
    if (frames.size() < 2)
        return;
    const std::size_t first = Place(random, frames.size());
    const std::size_t last = std::min(first + Place(random, 3), frames.size() - 1);
    file.Remove(frames[first].offset, frames[last].End());
}

} // namespace

std::string DamageName(DamageKind kind) {
    return kNames.at(static_cast<std::size_t>(kind));
}

DamageKind DamageNamed(std::string_view name) {
    const auto found = std::ranges::find(kNames, name);
    if (found == kNames.end())
        throw std::invalid_argument("no kind of damage: " + std::string(name));
    return kDamageKinds[found - kNames.begin()];
}

Bytes DrawJunk(Random& random, std::size_t count) {
    static const std::vector<std::uint8_t> kNearSync = {0xFF, 0xFF, 0xFB, 0xFA, 0xFD, 0xF3,
                                                        0xE3, 0x90, 0x92, 0x40, 0x00};
    Bytes junk(count);
    const int kind = random.Below(4);
    for (std::uint8_t& byte : junk) {
        switch (kind) {
        case 0:
            break;
        case 1:
            byte = static_cast<std::uint8_t>(random.Between(' ', '~'));
            break;
        case 2:
            byte = random.Byte();
            break;
        default:
            byte = random.Chance(50) ? random.Pick(kNearSync) : random.Byte();
        }
    }
    return junk;
}

void DoDamage(DamagedFile& file, DamageKind kind, const CleanStream& other, Random& random) {
    if (file.Size() == 0)
        return;
    switch (kind) {
    case DamageKind::kBitFlips:
        return random.Chance(40) ? FlipHeaderBit(file, random) : FlipBits(file, random);
    case DamageKind::kCut:
        return Cut(file, random);
    case DamageKind::kSplice:
        return SpliceOn(file, other, random);
    case DamageKind::kJunk: {
        const std::size_t place = random.Chance(10) ? file.Size() : DrawPlace(file, random);
        return file.Insert(place, DrawJunk(random, DrawLength(random, kMostJunkBytes)));
    }
    case DamageKind::kWrongCrc:
        return SpoilCrcs(file, random);
    case DamageKind::kMissingFrames:
        return LoseFrames(file, random);
    }
}

DamagedFile Damaged(const CleanStream& stream, const CleanStream& other, const std::vector<DamageKind>& kinds,
                    std::uint64_t seed) {
    Random random(seed);
    DamagedFile file(stream);
    bool isSpliced = false;
    for (int hits = random.Between(1, 4); hits > 0; --hits) {
        const DamageKind kind = random.Pick(kinds);
        if (kind == DamageKind::kSplice && std::exchange(isSpliced, true))
            continue;
        DoDamage(file, kind, other, random);
    }
    return file;
}

} // namespace test
