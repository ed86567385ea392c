/// The slice reader engine.
#pragma once

#include "decoder/decoder_interface.h"
#include "fileio/frame_buffer_reader.h"
#include "index/index_format.h"
#include "os/wave_format.h"
#include "plugin/engine_users.h"
#include "reader/built_in_frames.h"
#include "reader/byte_buffer.h"
#include "reader/frame_position.h"
#include "reader/pcm_queue.h"
#include "reader/preroll.h"
#include "trnmpafileread/frame_readers.h"
#include "trnpcmprocenc/pcm_basic_process.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace trnmpa {

/// A slice as ReadFrame hands it out; the bytes belong to the engine until its next call.
struct PcmSlice {
    unsigned char* data = nullptr;
    std::int32_t length = 0; ///< bytes
    WAVEFORMATEX format = {};
    bool atEnd = false; ///< the stream ended before the slice was full
};

/// Delivers the PCM of one MPEG audio file in slices of one duration, numbered from 0, and the places of its
/// frames. TRN_MpAudioFileReader and TRN_MpaFileCompReader tell what its operations do. Results are 1 or 0.
/// Nothing is thrown. One engine serves one caller at a time.
class KwMpAudioReader : public SharedEngine {
public:
    KwMpAudioReader() = default;
    virtual ~KwMpAudioReader() = default;
    KwMpAudioReader(const KwMpAudioReader&) = delete;
    KwMpAudioReader& operator=(const KwMpAudioReader&) = delete;

    std::int32_t Initialize();
    std::int32_t SetInputFile(const std::wstring& path);
    /// After StartRead: whether there are bytes of the media file to be read. StartRead, with an index, does
    /// not ask.
    bool HasMedia() const { return stream_.isReady && frames_->Length() > 0; }
    std::int32_t SetPerPcmFrameTime(std::int64_t time);
    std::int32_t StartRead();
    std::int32_t GetOriginalStreamInfo(WAVEFORMATEX& format) const;
    std::int32_t GetOriginalStreamInfo(tag_KW_MpaStreamInfo& info) const;
    std::int32_t SetOutputFormat(const WAVEFORMATEX& format);
    std::int32_t SeekTo(std::uint32_t slice);
    std::int32_t ReadFrame(PcmSlice& slice);
    /// The byte position of the frame that holds `time` (100 ns; before the stream counts as its start).
    std::int32_t PositionByTime(std::int64_t time, std::uint32_t& position);

protected:
    virtual std::unique_ptr<BuiltInFrames> CreateFrames();

private:
    static constexpr std::int64_t kDefaultSliceTime = 400'000;
    /// What a conversion to another rate may need of the samples before a slice.
    static constexpr std::size_t kRememberedBytes =
        std::size_t{TRN_PCMBasicProcess::kMostLookAheadSamples} * 2 * sizeof(std::int16_t);

    /// What StartRead makes of the file.
    struct Stream {
        bool isReady = false;
        WAVEFORMATEX format = {};
        FrameLayout layout;
        std::vector<MpaIndexEntry> frameTable;
        std::int64_t startSkip = 0; ///< samples of decoder delay before slice 0
        std::uint32_t requestedSlice = 0;
        std::uint32_t currentSlice = 0;
        bool knowsPlace = true;    ///< the queue goes on where the last slice ended
        bool metEnd = false;       ///< the last slice read was not full any more
        bool slicesBefore = false; ///< on the way to the requested slice at least one other was read
        std::size_t startDrop = 0; ///< bytes of the first frame that are not delivered
        PcmQueue queue{kRememberedBytes};
        std::optional<int> postponed; ///< thrown by the decoder while PCM was still to be delivered
    };

    void CreateCompanions();

    // Open.
    std::int32_t FindIndex(const std::wstring& indexPath);
    bool OpenWithIndex();
    bool OpenWithoutIndex();
    bool DetectConstantBitRate();

    // Delivery.
    bool CanRead() const;
    std::int64_t BytesBefore(std::int64_t slice) const;
    std::int32_t ReadRequested(PcmSlice& slice);
    bool ReadSlice(std::int64_t slice, PcmSlice& result);
    std::int64_t AnchorSlice(std::int64_t slice) const;
    void SeekAndPrime(std::int64_t anchor, std::int64_t slice);
    void PassOver(std::int64_t bytes);
    void SeekToFrame(std::int64_t frame);
    std::int64_t AgreeingPlace(std::int64_t offset) const;
    std::int64_t PrerollStartOf(std::int64_t frame, Preroll& preroll) const;
    std::optional<std::int64_t> FrameOffset(std::int64_t frame) const;
    void FillQueue(std::size_t bytes);
    void LookAhead(std::size_t bytes);
    void DecodeToQueue();
    std::size_t LookAheadBytes() const;
    bool HasOutputFormat() const;

    // Pieces of a slice.
    std::optional<std::size_t> ResultBytes(std::int64_t position, std::int64_t bytes) const;
    std::int64_t PieceBytes() const;
    void PlaceConverter(std::int64_t position, std::size_t pieceBytes);
    std::span<const std::uint8_t> Convert(std::span<const std::uint8_t> piece);

    std::wstring path_;
    bool hasIndex_ = false;
    std::int64_t sliceTime_ = kDefaultSliceTime;
    WAVEFORMATEX outputFormat_ = {};
    std::unique_ptr<BuiltInFrames> frames_;
    std::unique_ptr<CMpAudioFrameBufferReader> index_;
    std::unique_ptr<TRN_PCMBasicProcess> converter_;
    std::array<std::int16_t, kMaximumFramePcmValues> framePcm_ = {};
    ByteBuffer result_; ///< the slice that the caller has
    Stream stream_;
};

} // namespace trnmpa
