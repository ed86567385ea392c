/// Comparison of what the writer put in with what the plain decoder gets out.
#pragma once

#include "support/bitstream/stream.h"
#include "support/model/decoder_model.h"

#include <functional>
#include <string>

namespace test::bitstream {

/// What one decode of a whole stream showed.
struct DecodeSummary {
    std::size_t frames = 0;
    std::size_t values = 0;  ///< of PCM
    std::size_t clipped = 0; ///< of them
    double rms = 0.0;        ///< 1 is 16-bit full scale
};

/// Decodes the stream and expects every frame to be found at its place with the written header, side
/// information, scale factors and quantised values. `name` is shown with failures.
DecodeSummary ExpectDecodesAsWritten(const Stream& stream, const std::string& name);

/// Writes and checks.
Stream WriteChecked(const StreamOptions& options, const std::string& name);

} // namespace test::bitstream
