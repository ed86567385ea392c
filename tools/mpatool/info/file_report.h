/// All that is known about one file, and its two written forms.
#pragma once

#include "mpatool/info/file_claims.h"
#include "mpatool/module/module_host.h"
#include "mpatool/stream/stream_scan.h"
#include "trnmediadet/media_info.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace mpatool {

/// What the three sources say, which may well differ.
struct FileReport {
    std::wstring file;                    ///< as the user named it
    FileClaims claims;                    ///< what the file says of itself
    StreamScan scan;                      ///< what was counted
    std::int32_t classByName = 0;         ///< 0: the module does not handle such names
    std::int32_t probeResult = 0;         ///< of OpenFile: 0 unusable, 1 described, 2 variable bit rate
    std::optional<TRN_MEDIA_INFO2> probe; ///< only with result 1
    bool sampleReaderOpened = false;
    std::optional<WAVEFORMATEX> pcm;
};

/// Asks the module, which uses `decoder`, and walks over the file. Throws ToolError when the file cannot be
/// read or holds no frames.
FileReport MakeReport(ModuleHost& host, Decoder decoder, const std::wstring& file);

/// For people: several lines, the last one ended.
std::string ReadableReport(const FileReport& report);

/// For programs: an object.
nlohmann::ordered_json JsonReport(const FileReport& report);

} // namespace mpatool
