/// The sample reader as a class that host code links against: `TRN_MpAudioFileReader2`, which implements the
/// abstract interface `ITRN_AUDIO_READER_BASE`.
///
///     TRN_MpAudioFileReader2 reader;
///     KW_MEDIA_BASE_INFO_ST info;
///     if (reader.Initialize() == 1 && reader.SetInputFile(L"song.mp3") == 1 &&
///         reader.GetItemInfo(&info) == 1) {
///         AudioReaderDataIn request;
///         request.sampleCount = 4096;
///         unsigned char* pcm = nullptr;
///         int bytes = 0;
///         // `samples`: as many as the host wants; past the end it gets silence, not a failure.
///         for (; request.startSample < samples; request.startSample += request.sampleCount)
///             if (reader.GetSamples(request, &pcm, bytes, nullptr) == 1)
///                 consume(pcm, bytes);
///     }
///
/// Results are 1 for success; failures are negative codes (TRN_AUDIO_READER_*), and 0 where an operation says
/// so. Nothing is thrown. One object serves one caller at a time; different ones may be used on different
/// threads.
#pragma once

#include "os/automation_string.h"
#include "trnmediadet/media_info.h"
#include "trnmpafileread/audio_reader_data_in.h"
#include "trnmpafileread/export.h"

#include <cstdint>

namespace trnmpa {
class KwMpAudioReader2;
}

/// Results of the sample reader besides 1.
inline constexpr std::int32_t TRN_AUDIO_READER_EXCEPTION = -128;         ///< or a request of 2 GiB or more
inline constexpr std::int32_t TRN_AUDIO_READER_NO_PCM_BUFFER = -2320;    ///< memory
inline constexpr std::int32_t TRN_AUDIO_READER_NO_ENGINE = -2321;        ///< Initialize first; or memory
inline constexpr std::int32_t TRN_AUDIO_READER_NO_DECODER = -2322;       ///< memory, or no external decoder
inline constexpr std::int32_t TRN_AUDIO_READER_ANALYSIS_FAILED = -2323;  ///< no tag end or no first frame
inline constexpr std::int32_t TRN_AUDIO_READER_OPEN_FAILED = -2325;      ///< or a null record
inline constexpr std::int32_t TRN_AUDIO_READER_BAD_REQUEST = -2326;      ///< negative start or zero count
inline constexpr std::int32_t TRN_AUDIO_READER_DECODE_FAILED = -2329;    ///< a frame could not be decoded
inline constexpr std::int32_t TRN_AUDIO_READER_MEDIA_NOT_OPENED = -2331; ///< or a wrong decoder selector
inline constexpr std::int32_t TRN_AUDIO_READER_NOT_OPEN = -2333;         ///< GetItemInfo first

/// What the host's audio readers have in common. The order of the virtual operations is binding.
class TRN_EXPORT ITRN_AUDIO_READER_BASE {
public:
    ITRN_AUDIO_READER_BASE();
    ITRN_AUDIO_READER_BASE(const ITRN_AUDIO_READER_BASE& other);            ///< holds nothing to copy
    ITRN_AUDIO_READER_BASE& operator=(const ITRN_AUDIO_READER_BASE& other); ///< holds nothing to copy

    virtual std::int32_t AddRef() = 0;  ///< counts a user, in implementations that count
    virtual std::int32_t GetRef() = 0;  ///< the number of users, in implementations that count
    virtual std::int32_t Release() = 0; ///< the caller is done with the file

    /// Takes the file to read.
    virtual std::int32_t SetInputFile(CComBSTR path) = 0;

    /// Reads a run of samples; the PCM belongs to the reader until its next call.
    virtual std::int32_t GetSamples(AudioReaderDataIn request, unsigned char** data, std::int32_t& size,
                                    unsigned long* extra) = 0;

    /// Describes the file in the record at `info`, whose type depends on the implementation.
    virtual std::int32_t GetItemInfo(void* info) = 0;

    /// Passes settings, in implementations that have some.
    virtual std::int32_t ConfigureObj(std::int32_t item, void* first, std::int32_t firstSize, void* second,
                                      std::int32_t secondSize) = 0;
    virtual ~ITRN_AUDIO_READER_BASE();
};

/// Reads exact runs of 16-bit PCM from any sample position of one file. Copies share one engine, which lives
/// as long as one of them holds it.
class TRN_EXPORT TRN_MpAudioFileReader2 : public ITRN_AUDIO_READER_BASE {
public:
    TRN_MpAudioFileReader2();
    TRN_MpAudioFileReader2(const TRN_MpAudioFileReader2& other);            ///< shares the engine
    TRN_MpAudioFileReader2& operator=(const TRN_MpAudioFileReader2& other); ///< releases its own engine

    /// Creates the engine, with the decoder that the settings file names; a second call releases the first
    /// engine.
    std::int32_t Initialize();

    std::int32_t AddRef() override; ///< gives 1 and counts nothing
    std::int32_t GetRef() override; ///< gives 1

    /// Releases the engine, whose last user closes the file; gives 1. The object itself still has to be
    /// deleted by its owner.
    std::int32_t Release() override;

    /// Takes the file to open and finds the index beside it. 0 if there is an index that cannot be opened.
    std::int32_t SetInputFile(CComBSTR path) override;

    /// Reads request.sampleCount samples per channel from request.startSample; the other fields are ignored.
    /// `*data` points to signed 16-bit interleaved PCM, `size` is its length in bytes; the buffer belongs to
    /// the engine and stays valid until its next call. A request that needs anything past the end of the
    /// stream gives silence of its full length; with the external decoder only the missing part is silence.
    /// `extra` is not used.
    std::int32_t GetSamples(AudioReaderDataIn request, unsigned char** data, std::int32_t& size,
                            unsigned long* extra) override;

    /// Fills the KW_MEDIA_BASE_INFO_ST at `info`, whose audio format is that of the PCM. The first call opens
    /// the stream.
    std::int32_t GetItemInfo(void* info) override;

    /// Does nothing; gives 1.
    std::int32_t ConfigureObj(std::int32_t item, void* first, std::int32_t firstSize, void* second,
                              std::int32_t secondSize) override;

    ~TRN_MpAudioFileReader2() override;

private:
    trnmpa::KwMpAudioReader2* engine_ = nullptr;
};
