/// Layer III frames with their bit reservoir.
#pragma once

#include "support/bitstream/frame_head.h"
#include "support/bitstream/granule_writer.h"

namespace test::bitstream {

/// Collects frame after frame; the bytes are laid out at the end, as later frames fill earlier ones.
class Layer3Writer {
public:
    explicit Layer3Writer(const StreamOptions& options) : options_(options) {}

    void Add(const model::Header& header, Random& random);
    Stream Finish(Random& random);

private:
    /// Main data bytes that the frame may use when it is to leave some for the next.
    std::size_t BytesToUse(std::size_t available, std::size_t mostBack, Random& random) const;
    void ChooseFrame(FrameRecord& frame, std::size_t bits, BitWriter& mainData, Random& random);
    BlockChoice DrawBlock(std::size_t channel, const BlockChoice& left, Random& random);
    void ChooseScfsi(FrameRecord& frame, const std::array<std::array<BlockChoice, 2>, 2>& blocks,
                     Random& random) const;

    const StreamOptions& options_;
    std::vector<FrameRecord> frames_;
    std::vector<HeaderBytes> headers_;
    std::vector<std::uint8_t> mainData_; ///< of all frames, as if nothing stood between
    std::size_t slotStart_ = 0;          ///< in there, where the next frame's own room begins
    std::size_t blockTurn_ = 0;
};

} // namespace test::bitstream
