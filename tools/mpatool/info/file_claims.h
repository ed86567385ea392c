/// What a file says of itself, taken from it as it stands.
#pragma once

#include "mpatool/info/encoder_frame.h"
#include "mpatool/info/file_tags.h"

#include <optional>
#include <string>

namespace mpatool {

struct FileClaims {
    std::optional<EncoderFrame> encoderFrame; ///< when the first frame is one
    std::int32_t samplesPerFrame = 0;         ///< of that frame; per channel
    FileTags tags;
};

/// Whatever index lies beside the file. Throws ToolError when the file cannot be read.
FileClaims ReadClaims(const std::wstring& path);

} // namespace mpatool
