/// Stand-in for the library trnmediadet: media-description records and their conversion.
#pragma once

#include "os/wave_format.h"

#include <cstdint>
#include <string>

/// Media description, first form. The stand-in's record carries the fields that the module writes.
struct KW_MEDIA_BASE_INFO_ST {
    std::wstring filePath;               ///< set by the probe when it described the file from its frames
    std::int64_t fileSize = 0;           ///< bytes
    std::int32_t classIdentifier = 2049; ///< 2321 to 2323 for MPEG audio layer I to III; 1: no frame found
    std::int32_t audioCodec = 1;         ///< 1041 to 1043 for MPEG audio layer I to III
    std::int32_t streamPresent = 0;      ///< 1: the probe described the file from its frames
    std::int32_t audioPresent = 0;       ///< 1: the probe described the file
    std::int64_t duration = 0;           ///< 100 ns
    WAVEFORMATEX audioFormat = {}; ///< the probe's: the stream's, tag 85; the sample reader's: the PCM's
};

/// Media description, second form; the same fields as far as the module is concerned.
struct TRN_MEDIA_INFO2 {
    std::wstring filePath;               ///< as in KW_MEDIA_BASE_INFO_ST
    std::int64_t fileSize = 0;           ///< bytes
    std::int32_t classIdentifier = 2049; ///< as in KW_MEDIA_BASE_INFO_ST
    std::int32_t audioCodec = 1;         ///< as in KW_MEDIA_BASE_INFO_ST
    std::int32_t streamPresent = 0;      ///< as in KW_MEDIA_BASE_INFO_ST
    std::int32_t audioPresent = 0;       ///< as in KW_MEDIA_BASE_INFO_ST
    std::int64_t duration = 0;           ///< 100 ns
    WAVEFORMATEX audioFormat = {};       ///< as in KW_MEDIA_BASE_INFO_ST
};

/// Converts media descriptions.
class TRN_MediaInfoTransformer {
public:
    /// Fills `*second` from `*first`. 1 on success, 0 for a null pointer. Throws std::bad_alloc.
    std::int32_t Info1TransToInfo2(const KW_MEDIA_BASE_INFO_ST* first, TRN_MEDIA_INFO2* second);
};
