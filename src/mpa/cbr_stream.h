/// The probe's questions to a stream whose first frame it has found.
#pragma once

#include "mpa/frame_header.h"
#include "mpa/header_source.h"

#include <optional>

namespace trnmpa {

/// How the frames of a stream of constant bit rate lie.
enum class CbrKind : std::int32_t {
    kUnknown = 0,
    kByRate = 1,     ///< where the bit rate puts them; their lengths vary by padding
    kFixedLength = 2 ///< all of one length
};

/// What the answers depend on.
struct CbrStream {
    std::int64_t fileLength = 0;       ///< bytes
    std::int64_t firstFrameOffset = 0; ///< byte position of the first frame
    MpaFrameInfo info;                 ///< of the first frame
};

/// Looks at three places of the file; kUnknown when the stream is variable.
CbrKind CheckCbr(HeaderSource& source, const CbrStream& stream);

/// Duration in seconds up to the end of the last frame, which is searched for in the tail of the file;
/// nothing when there is none.
std::optional<double> FindCbrEnd(HeaderSource& source, const CbrStream& stream, CbrKind kind);

} // namespace trnmpa
