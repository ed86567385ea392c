/// Doing damage to files from a seed.
#pragma once

#include "support/bitstream/random.h"
#include "support/damage/damaged_file.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace test {

enum class DamageKind {
    kBitFlips,      ///< a few bits anywhere, or many close together
    kCut,           ///< bytes are gone: from the middle, from the start or from the end
    kSplice,        ///< another stream takes over, at a frame or anywhere
    kJunk,          ///< 1 byte to 10 kB of something else, between frames or within one
    kWrongCrc,      ///< the CRC word of protected frames; nothing where there are none
    kMissingFrames, ///< whole frames are gone
};
inline constexpr DamageKind kDamageKinds[] = {DamageKind::kBitFlips, DamageKind::kCut,
                                              DamageKind::kSplice,   DamageKind::kJunk,
                                              DamageKind::kWrongCrc, DamageKind::kMissingFrames};

/// "flips", "cut", "splice", "junk", "crc", "missing".
std::string DamageName(DamageKind kind);
/// Throws std::invalid_argument for another text.
DamageKind DamageNamed(std::string_view name);

/// Most bytes of junk at one place.
inline constexpr int kMostJunkBytes = 10'240;

/// `count` (1 to kMostJunkBytes) bytes: zeros, text, noise, or noise rich in what begins a header.
Bytes DrawJunk(bitstream::Random& random, std::size_t count);

/// Does damage of one kind, once. `other` is for splices.
void DoDamage(DamagedFile& file, DamageKind kind, const CleanStream& other, bitstream::Random& random);

/// One to four kinds of damage, drawn from `kinds`. The same arguments give the same file on every system.
DamagedFile Damaged(const CleanStream& stream, const CleanStream& other, const std::vector<DamageKind>& kinds,
                    std::uint64_t seed);

} // namespace test
