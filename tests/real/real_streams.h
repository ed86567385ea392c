/// The streams that make_streams.py made, and what independent programs say of them.
#pragma once

#include "support/loaded_module.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// One line of the manifest. Frames are those with sound, without an encoder's tag frame.
struct RealStream {
    std::string file;
    int layer = 0;
    std::string version; ///< "1", "2" or "2.5"
    int rate = 0;
    int channels = 0;
    std::string kind;        ///< "cbr", "abr", "vbr" or "free"
    int kbps = 0;            ///< of a constant bit rate
    std::string tag;         ///< "none", "Info" or "Xing"
    int shortBlocks = 0;     ///< short blocks of all granules and channels
    std::int64_t frames = 0; ///< as mpg123 and ffprobe agree
    int smallestFrame = 0;   ///< bytes
    int largestFrame = 0;    ///< bytes
    std::int64_t frameBytes = 0;

    bool HasConstantBitRate() const { return kind == "cbr"; }
    bool IsFreeFormat() const { return kind == "free"; }
    bool IsLowRateLayer2() const { return layer == 2 && version != "1"; }
    int SamplesPerFrame() const { return layer == 3 && version != "1" ? 576 : 1152; }
    /// Of all channels.
    int ValuesPerFrame() const { return SamplesPerFrame() * channels; }

    /// An "Info" frame stands where the sample reader looks for it in MPEG-1 streams of two channels only.
    bool HasSkippedTagFrame() const { return tag == "Info" && version == "1" && channels == 2; }
    /// A tag frame that is decoded as if it were sound: a frame of silence.
    bool HasDecodedTagFrame() const { return tag != "none" && !HasSkippedTagFrame(); }

    std::filesystem::path Path() const;
    /// An index of it, made from ffprobe's list of frames. It does not stand beside the stream.
    std::filesystem::path IndexPath() const;

    /// The sound as mpg123 decodes it, interleaved, nothing trimmed.
    Pcm Reference() const;

    /// What the module delivers of it: the decoder's delay skipped, a decoded tag frame as silence in front.
    Pcm ExpectedDelivery() const;
    /// Samples per channel of the delivery.
    std::int64_t DeliveredSamples() const;
    /// The same with the index beside the stream: nothing is skipped, and the first frame has no entry.
    std::int64_t SamplesWithIndex() const;
};

/// All streams of the manifest; throws when there is none, or none of what the tests rely on.
const std::vector<RealStream>& RealStreams();

/// The stream of that file; throws when there is none.
const RealStream& RealStreamNamed(std::string_view file);

} // namespace test
