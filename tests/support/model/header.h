/// Frame headers (ISO/IEC 11172-3 clause 2.4.1.3), as far as this decoder accepts them.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace test::model {

using HeaderBytes = std::array<std::uint8_t, 4>;

enum Mode { kStereo = 0, kJointStereo = 1, kDualChannel = 2, kSingleChannel = 3 };

struct Header {
    bool lsf = false; ///< MPEG-2 or MPEG 2.5
    bool mpeg25 = false;
    int layer = 0;
    bool crc = false; ///< a CRC word follows
    int bitrateIndex = 0;
    int kbps = 0;
    int sampleRateIndex = 0;
    int sampleRate = 0; ///< Hz
    bool padding = false;
    int mode = 0;
    int modeExtension = 0;
    int channels = 0;
    int frameBytes = 0; ///< whole frame, header included

    int Granules() const { return lsf ? 1 : 2; }
    int SideInfoBytes() const { return lsf ? (channels == 1 ? 9 : 17) : (channels == 1 ? 17 : 32); }
    int VersionIndex() const { return (lsf ? 1 : 0) + (mpeg25 ? 1 : 0); }
    bool MidSide() const { return mode == kJointStereo && (modeExtension & 2) != 0; }
    bool Intensity() const { return mode == kJointStereo && (modeExtension & 1) != 0; }
};

/// The header in these bytes, or nothing: no sync word, layer I, reserved fields, free format, or a format
/// other than that of `previous` (the header accepted before, if any). The version 01 counts as MPEG-1.
std::optional<Header> ParseHeader(const HeaderBytes& bytes, const std::optional<Header>& previous);

/// How many bytes to drop before the next candidate when these four are not a header.
int SearchStep(const HeaderBytes& bytes);

} // namespace test::model
