/// The abstract decoder, its byte source and its records.
#pragma once

#include <cstdint>

/// Where the decoder's bytes come from. The decoder never deletes its source.
class IAMPBitsource {
public:
    /// Copies up to `count` bytes of the stream, in stream order, to `buffer` and gives how many were copied,
    /// never more than asked. Any shortfall means that the stream has ended.
    virtual unsigned int Read(void* buffer, int count) = 0;

protected:
    ~IAMPBitsource() = default;
};

/// Description of the frame whose header was read last.
struct AMPFrameInfo {
    std::uint8_t synced = 0;        ///< 1 when the last ReadFrameHeader found a valid header
    std::uint8_t layer = 0;         ///< 1, 2 or 3
    std::uint8_t version = 0;       ///< 1 for MPEG-1, 2 for MPEG-2 and MPEG 2.5
    std::int32_t frameBytes = 0;    ///< whole frame, header included
    std::int32_t bitRate = 0;       ///< bit/s
    std::int32_t sampleRate = 0;    ///< Hz
    std::uint8_t stereo = 0;        ///< 0 for single channel
    std::int32_t bitsPerSample = 0; ///< always 16 from the decoder
    std::int32_t pcmBytes = 0;      ///< bytes of PCM that DecodeFrame writes for this frame
};

/// Codes that the decoder throws, as plain `int`.
enum AMPError : int {
    AMP_ERR_NONE = 0,
    AMP_ERR_END_OF_STREAM = 1,
    AMP_ERR_READ = 2,
    AMP_ERR_MPEG25 = 3,
    AMP_ERR_FREE_FORMAT = 5,
    AMP_ERR_SYNC = 6,
    AMP_ERR_INTERNAL = 7,
    AMP_ERR_NOT_ENOUGH_DATA = 8,
};

/// Largest PCM of one frame in 16-bit values (1152 samples, two channels).
inline constexpr int kMaximumFramePcmValues = 2304;

/// Decodes layer II and III frames to 16-bit interleaved PCM. The order of the operations is binding.
///
/// For each frame: ReadFrameHeader, GetFrameInfo, then DecodeFrame or SkipFrame. Failures leave as a thrown
/// `int` (AMP_ERR_END_OF_STREAM or AMP_ERR_READ); to go on after one, reposition the source and call Reset.
/// One decoder is used by one thread at a time; different decoders are independent.
class IAMPDecoder {
public:
    virtual ~IAMPDecoder() = default;

    /// Name and version of the decoder, a constant text.
    virtual const char* GetIdentification() = 0;

    /// Forgets the signal and the buffered bits; keeps the format that the first header fixed.
    virtual void Reset() = 0;

    /// Where the bytes come from; not owned.
    virtual void SetBitsource(IAMPBitsource* source) = 0;

    /// Where DecodeFrame writes; room for kMaximumFramePcmValues.
    virtual void SetOutputBuffer(short* pcm) = 0;

    /// After GetFrameInfo the frame's PCM size in bytes, after DecodeFrame the number of 16-bit values
    /// written.
    virtual unsigned int GetOutputSize() = 0;

    /// Describes the frame whose header was read; gives `pcmBytes`.
    virtual unsigned int GetFrameInfo(AMPFrameInfo* info) = 0;

    /// The text for an AMPError code.
    virtual const char* GetErrorText(int code) = 0;

    /// Does nothing.
    virtual void Close() = 0;

    /// Finds and reads the next header, the CRC word and the side information. At the end of the data the
    /// search leaves `synced` 0.
    virtual void ReadFrameHeader() = 0;

    /// Passes the body of the frame; layer III main data still enters the reservoir.
    virtual void SkipFrame() = 0;

    /// Decodes the body of the frame into the output buffer and gives true; false, with nothing read, when no
    /// header was found or no output buffer is set.
    virtual bool DecodeFrame() = 0;
};

/// A new decoder, owned by the caller, or null when memory runs out.
IAMPDecoder* AMPDecoderCreate();
