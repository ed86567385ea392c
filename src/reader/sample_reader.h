/// The sample reader engine.
#pragma once

#include "decoder/decoder_interface.h"
#include "fileio/frame_buffer_reader.h"
#include "index/index_format.h"
#include "mpa/frame_header.h"
#include "os/wave_format.h"
#include "plugin/engine_users.h"
#include "reader/byte_buffer.h"
#include "reader/frame_position.h"
#include "reader/frame_source.h"
#include "reader/preroll.h"
#include "trnmediadet/media_info.h"
#include "trnmpafileread/audio_reader_data_in.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace trnmpa {

/// Delivers exact runs of 16-bit PCM from any sample position of one MPEG audio file.
///
///     KwMpAudioReader2 reader;
///     if (reader.Initialize() == 1 && reader.SetInputFile(path) == 1 && reader.GetStreamInfo(&info) == 1)
///         result = reader.GetSamples(request, data, size, nullptr);
///
/// Results are 1 or a code of reader/result_codes.h. Nothing is thrown after construction. One engine serves
/// one caller at a time; engines are independent of each other.
class KwMpAudioReader2 : public SharedEngine {
public:
    /// Joins the log and reads the settings file; the decoder selector found there holds for the engine's
    /// life.
    KwMpAudioReader2();
    virtual ~KwMpAudioReader2();
    KwMpAudioReader2(const KwMpAudioReader2&) = delete;
    KwMpAudioReader2& operator=(const KwMpAudioReader2&) = delete;

    /// The selector of the decoder, as the settings had it when this engine was made.
    std::int32_t DecoderUse() const { return decoderUse_; }

    /// Closes, then creates the decoder and the PCM buffers.
    std::int32_t Initialize();

    /// Takes the file to open and finds the index beside it. 0 when there is an index that cannot be opened.
    std::int32_t SetInputFile(const std::wstring& path);

    /// The first call completes the open; every call copies the description, whose audio format is that of
    /// the PCM, to `record`.
    std::int32_t GetStreamInfo(KW_MEDIA_BASE_INFO_ST* record);

    /// Reads request.sampleCount samples per channel from request.startSample. `data` receives the PCM, owned
    /// by the engine and valid until its next call, `size` its bytes. A request that touches the end of the
    /// stream is answered with silence of its full length; with the external decoder just what is missing is
    /// silence. `extra` is not used.
    std::int32_t GetSamples(const AudioReaderDataIn& request, unsigned char*& data, std::int32_t& size,
                            unsigned long* extra);

    /// Reads whole samples to `pcm` from `start` on, as far as the stream goes: `decodedBytes` gets how much
    /// that is, less than pcm.size() where the stream ends before, and what is behind it means nothing.
    std::int32_t ReadUpToEnd(std::int64_t start, std::span<std::uint8_t> pcm, std::size_t& decodedBytes);

    /// What the open found, for as long as the file is open.
    const WAVEFORMATEX& Format() const { return stream_.format; }
    const AMPFrameInfo& Frame() const { return stream_.layout.frame; }
    /// Samples of decoder delay, left out before sample 0.
    std::int64_t Delay() const { return stream_.skipSamples; }
    bool HasIndex() const { return stream_.hasIndex; }
    std::span<const MpaIndexEntry> IndexEntries() const { return stream_.frameTable; }

    /// Back to the constructed state; 1.
    std::int32_t Close();

protected:
    /// The decoder that the selector names, with its file; null when there is none.
    virtual std::unique_ptr<FrameSource> CreateFrames(std::int32_t decoderUse);

private:
    /// What one open file needs; Close starts it afresh.
    struct Stream {
        bool hasFile = false; ///< SetInputFile was called
        bool needsOpen = true;
        bool hasIndex = false;
        bool muted = false;   ///< of the known layout; nothing sets it
        bool isPrimed = true; ///< the last reposition decoded all frames before its target
        std::wstring path;
        WAVEFORMATEX format = {};
        FrameLayout layout; ///< its place and bit rate count in a file without index
        KW_MEDIA_BASE_INFO_ST mediaInfo;
        std::uint32_t frameCount = 0;          ///< as the index header claims; not used
        std::vector<MpaIndexEntry> frameTable; ///< as the index really holds
        std::int64_t skipSamples = 0;          ///< decoder delay, left out before sample 0
        Preroll preroll;

        std::int64_t currentFrame = 0;
        std::int64_t targetFrame = 0;
        /// The frame whose PCM pcmBufferB holds, and the frame that source and decoder stand before; nothing
        /// after the end of the stream, a fault or an exception.
        std::optional<std::int64_t> heldFrame;
        std::optional<std::int64_t> nextFrame;

        std::size_t decodedBytes = 0; ///< of the last request, up to the first fault
    };

    std::int32_t CreateDecoder();
    std::int32_t FindIndex();
    std::int32_t OpenIndexFile(const std::wstring& indexPath, std::uint32_t blockKiB);
    std::int32_t CompleteOpen();

    // Open with an index.
    std::int32_t OpenWithIndex();
    void CheckAgainstFirstEntry();

    // Open without an index.
    std::int32_t OpenWithoutIndex();
    void DetectConstantBitRate();
    void SkipInfoFrame();

    // Delivery.
    enum class Filled {
        kWhole,     ///< perhaps with the external decoder's silence
        kToTheEnd,  ///< the stream ended before
        kUndecoded, ///< a frame could not be decoded
        kFailed,
    };
    Filled Fill(std::int64_t start, std::span<std::uint8_t> pcm);
    std::int32_t Deliver(const AudioReaderDataIn& request, std::size_t bytes, unsigned char*& data);
    std::int32_t Silence(std::size_t bytes, unsigned char*& data);
    bool HasFrames() const;
    bool CanContinue(std::int64_t frame, std::int64_t offset) const;
    bool Reposition(std::int64_t frame, bool& decoded);
    bool ReadSequentially(std::int64_t offset, std::uint8_t* pcm, std::size_t bytes);
    bool HoldFrame(bool& decoded);
    void Mute(std::uint8_t* pcm, std::size_t bytes);
    std::int64_t FindPrerollStart(std::int64_t frame);
    std::optional<std::int64_t> FrameOffset(std::int64_t frame) const;
    bool DecodeNextFrame(bool& decoded);
    bool RetryFrame(bool& decoded);
    void ForgetPosition();

    const std::int32_t decoderUse_; ///< the decoder selector as construction found it
    std::unique_ptr<FrameSource> frames_;
    std::unique_ptr<CMpAudioFrameBufferReader> indexSource_;
    ByteBuffer pcmBufferA_;                      ///< the request, or silence
    std::unique_ptr<std::int16_t[]> pcmBufferB_; ///< the last decoded frame
    Stream stream_;
};

} // namespace trnmpa
