/// Stand-in for the library trnlameMp3Decoder: a decoder that reads the media file itself.
#pragma once

#include "os/automation_string.h"

#include <cstdint>
#include <memory>

/// Description of a stream, from the header of its first frame.
struct Mp3StreamInfo {
    std::uint8_t synced = 0;        ///< 1 when a frame was found
    std::uint8_t layer = 0;         ///< 2 or 3
    std::uint8_t version = 0;       ///< 1 for MPEG-1, 2 for MPEG-2 and MPEG 2.5
    std::int32_t frameBytes = 0;    ///< whole frame, header included
    std::int32_t bitRate = 0;       ///< bit/s
    std::int32_t sampleRate = 0;    ///< Hz
    std::uint8_t stereo = 0;        ///< 0 for single channel
    std::int32_t bitsPerSample = 0; ///< always 16
    std::int32_t pcmBytes = 0;      ///< bytes of PCM that each frame gives
};

/// Decodes MPEG audio, layers II and III, to 16-bit interleaved PCM of the stream's own rate and channels,
/// one frame a call, over libmpg123. One object holds one file; positions and lengths are bytes. Not
/// thread-safe; different objects are independent. Results are 1 for success and 0 for failure unless said;
/// nothing is thrown.
///
/// Every frame that is read whole gives PCM of one length, in place: nothing is trimmed at the start or the
/// end, Info, Xing and VBRI frames are frames like any other, and the sound comes 529 samples late. A layer
/// III frame whose main data begins before the first byte that was decoded since the last reset gives
/// silence.
///
/// Frames are found as the built-in decoder finds them: at the position, else at the next byte where a header
/// of the stream's format stands. Free format and layer I are not served.
///
/// Where the storage behind "dqs:\" paths lies is TRCT_FileAccess::SetStorageFolder's matter.
class TRN_LameMp3Dec {
public:
    TRN_LameMp3Dec();
    virtual ~TRN_LameMp3Dec();
    TRN_LameMp3Dec(const TRN_LameMp3Dec&) = delete;
    TRN_LameMp3Dec& operator=(const TRN_LameMp3Dec&) = delete;

    /// Creates the decoder.
    virtual std::int32_t Initialize();

    /// Opens the media file and stands at its start; an earlier file is closed in any case.
    virtual std::int32_t SetInputFile(CComBSTR path);

    /// Where DecodeMP3 writes; not owned, room for 4608 bytes.
    virtual std::int32_t SetOutBuf(unsigned char* buffer);

    /// Finds the first frame from the file position on, within 64 KiB behind ID3v2 tags that stand there. It
    /// fixes the format of the frames that are decoded from now on. The file position stays.
    virtual std::int32_t StartDec();

    /// Describes the frame that StartDec found; an empty record when there was none.
    virtual std::int32_t GetStreamInfo(Mp3StreamInfo* info);

    /// Bytes ahead of the file's first frame, found as StartDec finds it: ID3v2 tags and padding, mostly. 0
    /// when no frame is found. The file position stays.
    virtual std::int32_t GetTagSize();

    /// Moves the file position, from the start of the file; behind the end is allowed.
    virtual std::int32_t SetNewFilePos(std::int64_t position);

    /// Length of the media file; 0 when none is open.
    virtual std::int64_t GetFileLen();

    /// Reads raw bytes at the file position. 1 when all `count` were there; what there was stands in
    /// `buffer`.
    virtual std::int32_t ReadFromFile(unsigned char* buffer, std::int32_t count);

    /// Decodes the next frame and gives the bytes of PCM in `size`; the file position is then behind the
    /// frame. 0, and no bytes, when there is no whole frame any more or it cannot be decoded.
    virtual std::int32_t DecodeMP3(std::int32_t& size);

    /// Forgets the signal, to be called after a jump and before the next DecodeMP3. `frameNumber` is the
    /// number of that next frame, counted from the first one that reading through decodes. With it the sound
    /// is, once the frames have all their main data and one more frame is past, bit for bit what reading
    /// through gives; without it single samples may differ by 1, as the order of the library's additions
    /// depends on it.
    virtual std::int32_t ResetDecodeBuf(std::int64_t frameNumber = 0);

private:
    struct State;
    std::unique_ptr<State> state_;
};
