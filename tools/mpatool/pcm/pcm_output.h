/// A file of PCM that is written in order.
#pragma once

#include "mpatool/output/output_target.h"
#include "mpatool/pcm/wave_writer.h"

#include <cstdint>
#include <span>
#include <string>

namespace mpatool {

/// A WAV or raw file of an amount that is known before the first of it.
class PcmOutput {
public:
    /// Opens the file as OutputTarget does. Throws ToolError.
    PcmOutput(const OutputChoice& choice, const std::wstring& input, bool force);

    /// Says what will be written, in samples per channel. Once, before Write. Throws as Write does.
    void Begin(const PcmFormat& format, std::int64_t samples);

    /// Throws ToolError, OutputClosed or Interrupted.
    void Write(std::span<const std::uint8_t> pcm);

    /// The file gets its name. Throws ToolError, also when another amount was written than announced.
    void Commit();

private:
    OutputTarget target_;
    std::wstring input_;
    bool isWave_;
    std::uint64_t announced_ = 0; ///< bytes
    std::uint64_t written_ = 0;
};

} // namespace mpatool
