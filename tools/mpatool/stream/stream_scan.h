/// What a walk over all frames of a file tells, beyond what the module's interfaces say.
#pragma once

#include "mpa/frame_header.h"
#include "mpatool/module/decoder_choice.h"

#include <cstdint>
#include <optional>
#include <string>

namespace mpatool {

/// The index beside the file.
struct IndexScan {
    std::uint32_t claimedEntries = 0; ///< by its header
    std::int64_t entries = 0;         ///< really there
    bool matchesFrames = false;       ///< its entries are exactly the frames of the walk
};

/// The frames that the sample reader delivers: from the index's first entry on when there is an index, else
/// from the first frame that is no "Info" frame.
struct StreamScan {
    std::optional<IndexScan> index;
    bool hasInfoFrame = false; ///< passed over at the start; never with an index, which is not looked behind
    trnmpa::MpaFrameHeader firstHeader;
    std::int64_t fileBytes = 0;
    std::int64_t frames = 0;          ///< whole ones; greater than 0
    std::int64_t frameBytes = 0;      ///< of all frames together
    std::int32_t samplesPerFrame = 0; ///< per channel
    std::int32_t delaySamples = 0;    ///< per channel; decoded before sample 0 and left out
    std::int32_t lowestBitRate = 0;   ///< bit/s
    std::int32_t highestBitRate = 0;  ///< bit/s
    bool isGapless = true;            ///< each frame begins where the one before ends

    bool IsConstantBitRate() const { return lowestBitRate == highestBitRate; }

    /// Samples per channel that the sample reader holds, and their time in seconds.
    std::int64_t Samples() const;
    double Seconds() const;

    /// Bit/s over all frames.
    double AverageBitRate() const;
};

/// Walks over the whole file, as a sample reader with `decoder` delivers it. Throws ToolError when it cannot
/// be read or holds no frame.
StreamScan ScanStream(const std::wstring& path, Decoder decoder);

} // namespace mpatool
