/// Two classes that host code links against: `TRN_MpAudioFileReader`, which delivers PCM in slices of fixed
/// duration, and `TRN_MpaFileCompReader`, which reports a stream's format and the places of its frames.
///
///     TRN_MpAudioFileReader reader;
///     if (reader.Initialize() == 1 && reader.SetInputFile(L"song.mp3") == 1 && reader.StartRead() == 1) {
///         unsigned char* data = nullptr;
///         int length = 0;
///         WAVEFORMATEX format = {};
///         int atEnd = 0;
///         while (reader.ReadFrame(&data, length, &format, atEnd) == 1)
///             consume(data, length, format);
///         reader.StopRead();
///     }
///
/// Results are 1 for success and 0 for failure. Times are counts of 100 ns. Nothing is thrown. Copies of an
/// object share one engine, which lives as long as one of them holds it; an engine serves one caller at a
/// time. Storage paths ("dqs:\") are read without an index.
#pragma once

#include "os/automation_string.h"
#include "os/wave_format.h"
#include "trnmpafileread/export.h"

#include <cstdint>

namespace trnmpa {
class KwMpAudioReader;
}

/// Format of a stream, 20 bytes.
struct tag_KW_MpaStreamInfo {
    std::uint8_t version;        ///< 1 for MPEG-1, 2 for MPEG-2 and MPEG 2.5
    std::uint8_t layer;          ///< 1, 2 or 3
    std::uint32_t bitRate;       ///< bit/s, of the first frame
    std::uint32_t sampleRate;    ///< Hz
    std::uint32_t bitsPerSample; ///< 16
    std::uint8_t stereo;         ///< 1 for two channels, 0 for one
};
static_assert(sizeof(tag_KW_MpaStreamInfo) == 20);

/// PCM in slices of fixed duration, numbered from 0, in the stream's own format or another.
///
/// Slice k is [k, k + 1) times the slice time, cut to whole samples, so that the slices in order are the
/// stream, with nothing lost or repeated between them; what does not fill a last slice is not delivered.
/// Without an index, slice 0 begins after the decoder's delay. After a jump in an MPEG-1 stream of constant
/// bit rate, or with an index, a slice is, bit for bit, what reading from the start gives. In Layer III at
/// the lower sampling frequencies without an index, a slice after a jump begins 550 samples later than in
/// order; in streams of variable bit rate without an index, and past the last entry of an index, its place is
/// estimated.
class TRN_EXPORT TRN_MpAudioFileReader {
public:
    TRN_MpAudioFileReader();
    TRN_MpAudioFileReader(const TRN_MpAudioFileReader& other);            ///< shares the engine
    TRN_MpAudioFileReader& operator=(const TRN_MpAudioFileReader& other); ///< releases its own engine
    virtual ~TRN_MpAudioFileReader();

    /// Creates the engine; a second call keeps it. 0 only when memory runs out. Before the first call all
    /// other operations give 0.
    std::int32_t Initialize();

    /// Sets the duration of a slice, at first 400,000 (40 ms). Gives 1 whatever is set; ReadFrame gives 0 for
    /// one that is not positive, or whose slices have 2 GiB or more.
    std::int32_t SetPerPCMFrameTime(std::int64_t time);

    /// Takes the file and looks for its index. 0 if the file does not exist, or if there is an index that
    /// cannot be opened.
    std::int32_t SetInputFile(CComBSTR path);

    /// The format that the stream decodes to (all zeros before StartRead). Gives 1.
    std::int32_t GetOriginalStreamInfo(WAVEFORMATEX& format);

    /// The format of the slices from now on; all zeros (the default) for the stream's own. PCM of 1 or 2
    /// channels, 8, 16, 24 or 32 bits at a rate between 1/256 and 256 times the stream's is supported; with
    /// another format ReadFrame gives 0.
    std::int32_t SetOutputWAVEFormat(WAVEFORMATEX& format);

    /// Opens the file and goes to slice 0. 0 if the file holds no stream.
    std::int32_t StartRead();

    /// Sets the next slice to read. Nothing is read or checked before ReadFrame; StartRead begins at 0 again.
    /// Gives 1.
    std::int32_t SeekTo(std::uint32_t slice);

    /// Reads the next slice: `*data` points to its PCM, `length` is its length in bytes, `*format` (if not
    /// null) its format. The bytes belong to the engine and stay valid until its next call. `atEnd` is 1 when
    /// the stream ended before the slice was full; the result is then 0 and the slice empty, as after any
    /// failure. If the decoder fails on the way to a slice after a jump, the result may be 1 with an empty
    /// slice (length 0, data null); slices shorter than a sample may be empty, too. Whatever the result, the
    /// next call reads the slice after this one.
    std::int32_t ReadFrame(unsigned char** data, std::int32_t& length, WAVEFORMATEX* format,
                           std::int32_t& atEnd);

    /// Does nothing: the file is closed when the engine is destroyed. Gives 1.
    std::int32_t StopRead();

private:
    trnmpa::KwMpAudioReader* engine_ = nullptr;
};

/// The format of a stream and the places of its frames, for hosts that handle the frames themselves.
class TRN_EXPORT TRN_MpaFileCompReader {
public:
    /// Creates the engine at once; without memory for it every operation but Initialize and StopRead gives 0.
    TRN_MpaFileCompReader();
    TRN_MpaFileCompReader(const TRN_MpaFileCompReader& other);            ///< shares the engine
    TRN_MpaFileCompReader& operator=(const TRN_MpaFileCompReader& other); ///< releases its own engine
    virtual ~TRN_MpaFileCompReader();

    /// Does nothing; gives 1.
    std::int32_t Initialize();

    std::int32_t SetInputFile(CComBSTR path); ///< as in TRN_MpAudioFileReader
    std::int32_t StartRead();                 ///< as in TRN_MpAudioFileReader

    /// Fills `info` (all zeros before StartRead). Gives 1.
    std::int32_t GetOriginalStreamInfo(tag_KW_MpaStreamInfo& info);

    /// Stores the byte position of the frame that holds `time` in `position` and gives 1: exact with an index
    /// and for constant bit rate, otherwise an estimate; a time below 0 counts as 0. The decoder's delay is
    /// not counted. Past the end, the place is computed in the same way and lies outside the file, at most at
    /// 4,294,967,295. 0, with nothing stored, before StartRead and for a stream without a format.
    std::int32_t SeekTo(std::int64_t time, unsigned long& position);

    /// Not provided: gives 0 and touches nothing.
    std::int32_t ReadAudioSample(unsigned char* buffer, std::int32_t& length);

    /// Does nothing; gives 1.
    std::int32_t StopRead();

private:
    trnmpa::KwMpAudioReader* engine_ = nullptr;
};
