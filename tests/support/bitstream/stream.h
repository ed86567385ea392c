/// Writes valid layer II and III streams with chosen features from a seed, and says what it put in.
#pragma once

#include "support/bitstream/options.h"
#include "support/model/header.h"
#include "support/model/side_info.h"

#include <array>
#include <cstdint>
#include <vector>

namespace test::bitstream {

/// Scale factors as a decoder must see them; bands that the granule does not have are 0.
struct ScaleFactorSet {
    std::array<int, 22> longBand{};
    std::array<std::array<int, 3>, 13> shortBand{}; ///< [band][window]
};

/// One channel of one layer III granule.
struct GranuleContent {
    ScaleFactorSet scaleFactors;
    std::array<int, 576> lines{}; ///< quantised, in the order of the bit stream
};

/// One layer II frame; all [channel][subband] first.
struct Layer2Content {
    std::array<std::array<int, 32>, 2> levels{}; ///< 0: no samples
    std::array<std::array<int, 32>, 2> scfsi{};
    std::array<std::array<std::array<int, 3>, 32>, 2> scaleFactors{};
    std::array<std::array<std::array<int, 36>, 32>, 2> samples{}; ///< -(levels - 1) / 2 to (levels - 1) / 2
};

struct FrameRecord {
    std::size_t offset = 0; ///< of the header in the stream
    int length = 0;         ///< bytes, header included
    int kbps = 0;
    int mainDataBegin = 0; ///< bytes before the frame's own main data; layer III
    int mainDataBytes = 0; ///< that the frame's granules take up, from there; layer III
    int sideInfoBytes = 0; ///< behind header and CRC word; in layer II all before the samples, rounded up

    model::Header header;
    model::SideInfo sideInfo;                                ///< layer III
    std::array<std::array<GranuleContent, 2>, 2> granules{}; ///< layer III: [granule][channel]
    Layer2Content layer2;
};

struct Stream {
    std::vector<std::uint8_t> bytes;
    std::vector<FrameRecord> frames;
};

/// The same options give the same stream on every system. Throws std::invalid_argument for options that the
/// standard does not allow (among them layer II combinations without an allocation table).
Stream WriteStream(const StreamOptions& options);

/// How many bits of a frame are flipped on average; the four header bytes are left alone.
struct Damage {
    int sideInfoBitsPerTenFrames = 0;
    int bodyBitsPerTenFrames = 0;
};

/// The stream's bytes with bits flipped at random.
std::vector<std::uint8_t> Spoil(const Stream& stream, const Damage& damage, std::uint64_t seed);

} // namespace test::bitstream
