/// What a written stream is to contain. Whatever is left open is drawn from the seed.
#pragma once

#include "support/model/header.h"

#include <cstdint>
#include <vector>

namespace test::bitstream {

/// Value of an option that is drawn anew each time.
inline constexpr int kAny = -1;

enum class Version { kMpeg1, kMpeg2, kMpeg25 };

enum class Padding {
    kNever,
    kAlways,
    kByRate, ///< as often as the nominal bit rate needs
    kRandom,
};

enum class ReservoirUse {
    kNone,   ///< every frame's main data begins in the frame
    kFull,   ///< frames leave as much as the next one may reach back to
    kRandom, ///< anything between
};

struct BlockChoice {
    int type = 0;
    bool mixed = false; ///< also allowed with types 1 and 3
};

struct Layer3Options {
    /// One is drawn for each granule and channel, or for each granule.
    std::vector<BlockChoice> blocks{{}};
    bool sameBlocksInBothChannels = false;
    bool blocksInTurn = false; ///< granule after granule down the list, both channels alike, instead of drawn

    std::vector<int> tables;     ///< drawn for each region; empty: all but 4 and 14
    int count1Table = kAny;      ///< 0 is A
    bool regionsPastEnd = false; ///< region counts may point behind the last band

    int scfsi = kAny;                  ///< four bits, the first group's highest; MPEG-1
    bool scfsiOverShortBlocks = false; ///< also where a granule of the frame has short blocks (not standard)
    std::vector<int> scalefacCompress; ///< drawn; empty: all
    std::vector<int> rightCompress; ///< the same for an intensity right channel at lower sampling frequencies
    bool positionsAbove7 = false;   ///< MPEG-1 intensity positions that the standard has no use for
    int scalefacScale = kAny;
    int preflag = kAny; ///< MPEG-1, long blocks
    int subblockGain = kAny;
    int globalGain = kAny; ///< kAny: for the level below
    double level = 0.15;   ///< aimed RMS of a granule, 1 being full scale of the standard's output

    ReservoirUse reservoir = ReservoirUse::kFull;
    int fillPercent = 100; ///< of the main data bits that a frame may use
};

struct Layer2Options {
    std::vector<int> scfsi{0, 1, 2, 3}; ///< drawn for each subband and channel
    int allocatedPercent = 85;          ///< chance of a subband to get samples, while bits last
    bool forbidden = false; ///< combinations without an allocation table get a body of random bytes
};

struct StreamOptions {
    std::uint64_t seed = 1;
    int frames = 8;
    Version version = Version::kMpeg1;
    int layer = 3; ///< 2 or 3
    int sampleRateIndex = 0;
    std::vector<int> bitrateIndices{9}; ///< one is drawn for each frame; one alone is a constant bit rate
    int mode = model::kStereo;
    std::vector<int> modeExtensions{0}; ///< drawn for each frame, written in every mode
    bool crc = false;
    Padding padding = Padding::kByRate;
    bool incidentalBits = false; ///< private, copyright and original bits at random
    Layer3Options layer3;
    Layer2Options layer2;
};

} // namespace test::bitstream
