/// What the frames behind each column of a picture are like.
#pragma once

#include "decoder/layer3/side_info.h"
#include "mpatool/module/decoder_choice.h"
#include "mpatool/waveform/columns.h"

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace mpatool {

/// Kinds of granules in Layer III (ISO/IEC 11172-3, 2.4.2.7).
enum class BlockKind { kLong, kStart, kShort, kStop, kMixed };
inline constexpr std::size_t kBlockKinds = 5;

BlockKind KindOf(const trnmpa::GranuleInfo& granule);

/// Lowest, highest and mean of a quantity over stretches of samples.
class Spread {
public:
    void Add(std::int32_t value, std::int64_t samples);

    bool IsEmpty() const { return samples_ == 0; }
    std::int32_t Lowest() const { return lowest_; }
    std::int32_t Highest() const { return highest_; }
    double Mean() const { return sum_ / static_cast<double>(samples_); }

private:
    std::int32_t lowest_ = std::numeric_limits<std::int32_t>::max();
    std::int32_t highest_ = std::numeric_limits<std::int32_t>::min();
    double sum_ = 0;
    std::int64_t samples_ = 0;
};

struct FrameColumn {
    Spread bitRate;                                 ///< kbit/s
    Spread reservoir;                               ///< bytes of main data from before a frame that it uses
    std::array<std::int64_t, kBlockKinds> blocks{}; ///< samples of both channels
};

class FrameColumns {
public:
    explicit FrameColumns(const Columns& columns) : columns_(columns), values_(columns.Count()) {}

    /// A frame and its samples, as the reader numbers them.
    void AddBitRate(const SampleRange& samples, std::int32_t kilobits);
    void AddSideInfo(const SampleRange& samples, const trnmpa::DecoderHeader& header,
                     const trnmpa::SideInfo& sideInfo);

    const FrameColumn& At(std::size_t column) const { return values_[column]; }
    std::size_t Count() const { return values_.size(); }

    /// The most that the frames can say of the reservoir, in bytes.
    std::int32_t ReservoirLimit() const { return reservoirLimit_; }

private:
    Columns columns_;
    std::vector<FrameColumn> values_;
    std::int32_t reservoirLimit_ = 0;
};

/// Walks over the frames up to the columns' end. With `withBlocks` the side information of Layer III frames
/// is read as well. Throws ToolError or Interrupted.
FrameColumns CollectFrames(const std::wstring& file, const Columns& columns, Decoder decoder,
                           bool withBlocks);

} // namespace mpatool
