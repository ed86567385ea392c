#include "mpatool/info/file_claims.h"

#include "mpa/file_header_sources.h"
#include "mpa/stream_start.h"
#include "mpatool/output/tool_error.h"
#include "trcommontoolsr/file_access.h"

namespace mpatool {

FileClaims ReadClaims(const std::wstring& path) {
    RequireReadable(path);
    TRCT_FileAccess file;
    if (file.OpenFile(path.c_str(), TRCT_OPEN_FOR_READING) != 1)
        throw ToolError(path, "cannot be opened");
    trnmpa::FileAccessHeaderSource source(file);
    FileClaims claims;
    const auto start = trnmpa::LocateAudioStart(source);
    trnmpa::SourceWindow window(source);
    if (start) {
        const trnmpa::MpaFrameHeader& first = start->firstHeader;
        claims.encoderFrame = ReadEncoderFrame(window, first);
        claims.samplesPerFrame = trnmpa::SamplesPerFrame(first.layer, first.lsf != 0 ? 2 : 1);
    }
    claims.tags = FindTags(window, file.GetLength());
    return claims;
}

} // namespace mpatool
