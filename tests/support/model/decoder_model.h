/// A decoder of layer II and III streams by the formulas of the standard, in double precision and without any
/// fast transform, with this decoder's wanted oddities. Slow and plain: what the real one is held against.
#pragma once

#include "support/model/header.h"
#include "support/model/hybrid.h"
#include "support/model/layer2.h"
#include "support/model/reservoir.h"
#include "support/model/side_info.h"
#include "support/model/synthesis.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace test::model {

/// One channel of one layer III granule, stage by stage.
struct ChannelTrace {
    ScaleFactors scaleFactors;
    QuantisedLines lines;
    Spectrum requantised{};
    Spectrum afterStereo{};
    Spectrum afterReorder{};
    Spectrum afterAlias{};
    SubbandSamples subbands{};
};

/// One frame: what was read and what became of it.
struct Frame {
    std::size_t offset = 0; ///< of the header in the stream
    Header header;
    SideInfo sideInfo;                                   ///< layer III
    std::array<std::array<ChannelTrace, 2>, 2> granules; ///< layer III: [granule][channel]
    Layer2Body layer2;                                   ///< layer II
    std::vector<std::int16_t> pcm;                       ///< interleaved
    std::vector<double> sums;                            ///< the same values before rounding and clipping
};

enum class Outcome {
    kDone,
    kNotSynced,   ///< the search for a header ran out of data
    kEndOfStream, ///< header, side information or body is cut
    kCrcCut,      ///< the CRC word is cut
};

class Decoder {
public:
    explicit Decoder(std::span<const std::uint8_t> stream) : stream_(stream) {}

    /// Goes on at this offset with no signal and no main data; the format of the first header stays binding.
    void Reset(std::size_t offset = 0);

    /// Finds and reads the next header (and side information).
    Outcome ReadHeader();

    /// The body of the frame whose header was read, into CurrentFrame().
    Outcome DecodeBody();

    /// Passes the body; main data still enters the reservoir.
    Outcome SkipBody();

    const Frame& CurrentFrame() const { return frame_; }

private:
    std::optional<std::span<const std::uint8_t>> Take(std::size_t count);
    bool Search(HeaderBytes& bytes);
    void DecodeLayer3(std::span<const std::uint8_t> body);
    void DecodeGranule(BitReader& bits, std::size_t granule);
    void Synthesise(const SampleRow& row);

    std::span<const std::uint8_t> stream_;
    std::size_t position_ = 0;
    std::optional<Header> lock_;
    Frame frame_;
    std::size_t bodyBytes_ = 0;
    Reservoir reservoir_;
    std::array<Overlap, 2> overlap_{};
    Synthesis synthesis_;
};

/// Frame after frame from the start until the data ends; interleaved, at this decoder's own level.
std::vector<std::int16_t> DecodeStream(std::span<const std::uint8_t> stream);

} // namespace test::model
