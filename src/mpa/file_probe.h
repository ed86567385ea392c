/// The file probe: tells whether a file holds a stream that the module serves, and describes it.
#pragma once

#include "mpa/cbr_stream.h"
#include "mpa/frame_header.h"
#include "trcommontoolsr/file_access.h"
#include "trnmediadet/media_info.h"

#include <cstdint>
#include <string>

namespace trnmpa {

struct MpaIndexHeader;

/// Results of CMPGAudioFileBufferReader::ParseFile.
inline constexpr std::int32_t kProbeUnusable = 0;
inline constexpr std::int32_t kProbeDescribed = 1;
inline constexpr std::int32_t kProbeVariableBitRate = 2;

/// Probes one file after another. Used by one thread at a time.
class CMPGAudioFileBufferReader {
public:
    CMPGAudioFileBufferReader();
    ~CMPGAudioFileBufferReader();
    CMPGAudioFileBufferReader(const CMPGAudioFileBufferReader&) = delete;
    CMPGAudioFileBufferReader& operator=(const CMPGAudioFileBufferReader&) = delete;

    /// Probes `path` and leaves it closed. With an index beside it the description comes from the index
    /// header alone. kProbeUnusable: it cannot be opened, has no frame, or its index cannot be opened.
    /// kProbeVariableBitRate: frames were found, but nothing beyond the file size is described. Fields that a
    /// call does not fill keep what an earlier call left.
    std::int32_t ParseFile(const std::wstring& path);

    /// Converts the description; 0 for a null pointer, else 1.
    std::int32_t ToMediaInfo2(TRN_MEDIA_INFO2* out) const;

    /// The file helpers, over the probe's file access. Opening keeps the path on success; all but the three
    /// that give a position, a length or a count answer 1 or 0.
    std::int32_t OpenFile(const std::wstring& path);
    std::int64_t GetFileLength();
    std::int64_t Tell() const;
    std::int32_t Seek(std::int64_t position);
    std::uint32_t ReadBytes(void* buffer, std::uint32_t count);
    std::int32_t CloseFile();

    /// What the last call found.
    const KW_MEDIA_BASE_INFO_ST& Description() const { return description_; }
    const MpaFrameHeader& FirstHeader() const { return header_; }
    CbrKind Kind() const { return cbrKind_; }
    bool HasInfoFrame() const { return infoFrame_ != 0; }
    bool IsVbr() const { return isVbr_ != 0; }

private:
    std::int32_t ParseIndex(const std::wstring& path);
    std::int32_t ParseStream();
    bool DetectVbr(HeaderSource& source, const CbrStream& stream);
    double CbrSeconds(HeaderSource& source, const CbrStream& stream) const;
    void DescribeIndex(const MpaIndexHeader& index);
    void DescribeStream(const MpaFrameInfo& info);
    void DescribeLayer(std::int32_t layer);

    std::wstring path_;
    TRCT_FileAccess file_;
    MpaFrameHeader header_;
    CbrKind cbrKind_ = CbrKind::kUnknown;
    std::int64_t fileLength_ = 0;
    std::int32_t infoFrame_ = 0;
    KW_MEDIA_BASE_INFO_ST description_;
    std::int32_t isVbr_ = 0;
};

} // namespace trnmpa
