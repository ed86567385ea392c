/// The byte source of the reader engines.
#pragma once

#include "decoder/decoder_interface.h"
#include "trcommontoolsr/file_access.h"
#include "trnCommonUtils/easy_file.h"

#include <cstdint>
#include <memory>
#include <string>

namespace trnmpa {

/// Result of InfoTagKind.
enum FrameTagKind : std::uint8_t {
    kNoInfoTag = 1,
    kInfoTag = 2,
};

/// True for a path of the family's storage: one that holds "dqs:\" anywhere, in lower case.
bool IsStoragePath(const std::wstring& path);

/// Reads a file for an engine and for the decoder, through one of two back ends: TRCT_FileAccess (the
/// default, and the one for storage paths) or TRN_EasyFile. Positions and lengths are bytes. Nothing is
/// thrown. Not thread-safe.
///
///     CMpAudioFrameBufferReader source;
///     source.UseEasyFile(0, 64);  // before every Open that is to use it
///     if (source.Open(path) == 1)
///         bytes = source.Read(buffer, count);
///     source.Close();
class CMpAudioFrameBufferReader : public IAMPBitsource {
public:
    CMpAudioFrameBufferReader();

    /// Copies up to `count` bytes to `buffer` and gives how many were copied; 0 for a count below 1. At the
    /// end of the file TRCT_FileAccess gives all or nothing (0, the position then stands at the end),
    /// TRN_EasyFile what is left.
    unsigned int Read(void* buffer, int count) override;
    virtual ~CMpAudioFrameBufferReader();

    /// Selects the TRN_EasyFile back end with blocks of `blockKiB` KiB (0: that library's default; what does
    /// not fit 32 bits as bytes counts as the largest number that does). `reserved` is ignored. Gives 1; 0
    /// without memory for the file object (every read then gives 0 bytes).
    std::int32_t UseEasyFile(int reserved, std::uint32_t blockKiB);

    /// Opens `path`; a storage path goes back to TRCT_FileAccess first. 1 on success, else 0 and the stored
    /// path stays. TRN_EasyFile never fails here: a file that cannot be opened shows as reads that give 0
    /// bytes.
    std::int32_t Open(const std::wstring& path);

    /// Closes the file and gives 1. On the TRN_EasyFile back end this destroys the file object but keeps the
    /// choice: without a new UseEasyFile the next Open finds no file object, and reads give 0 bytes.
    std::int32_t Close();

    /// Where the next read starts; 0 when nothing is open.
    std::int64_t GetPosition() const;

    /// Length of the file; 0 when nothing is open.
    std::int64_t GetLength() const;

    /// Moves the position, behind the end too; a position below 0 moves nothing. The result belongs to the
    /// back end: TRN_EasyFile gives `position` back, moved or not (-1 without a file object); TRCT_FileAccess
    /// gives 1, or 0 when it did not move. GetPosition tells on both.
    std::int64_t SetPosition(std::int64_t position);

    /// kInfoTag when the bytes of a frame read "Info" at offset 36, else kNoInfoTag, which also answers fewer
    /// than 40 bytes. That is where a stereo MPEG-1 frame carries it; other frames have it elsewhere and are
    /// not found.
    static std::uint8_t InfoTagKind(const std::uint8_t* frame, std::uint32_t length);

    /// Path of the last successful Open; empty before.
    const std::wstring& Path() const { return path_; }

private:
    /// Of the known layout; nothing is matched with it.
    struct ReferenceHeader {
        std::uint8_t header[4] = {};
        std::uint8_t lowSamplingFrequency = 0;
        std::uint8_t layer = 0;
        std::int32_t sampleRate = 0;
    };

    TRCT_FileAccess fileAccess_;
    std::wstring path_;
    std::unique_ptr<TRN_EasyFile> easyFile_;
    std::uint32_t useEasyFile_ = 0;
    [[maybe_unused]] ReferenceHeader reference_;
};

} // namespace trnmpa
