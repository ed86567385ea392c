#include "trnmpafileread/audio_reader.h"

#include "plugin/boundary.h"
#include "plugin/engine_users.h"
#include "reader/result_codes.h"
#include "reader/sample_reader.h"

#include <memory>
#include <string>

namespace {

using trnmpa::WithEngine;

// What the engine answers is what the host is told.
static_assert(trnmpa::kUnexpectedException == TRN_AUDIO_READER_EXCEPTION &&
              trnmpa::kNoPcmBuffer == TRN_AUDIO_READER_NO_PCM_BUFFER &&
              trnmpa::kNoFrameBufferReader == TRN_AUDIO_READER_NO_ENGINE &&
              trnmpa::kNoDecoder == TRN_AUDIO_READER_NO_DECODER &&
              trnmpa::kAnalysisFailed == TRN_AUDIO_READER_ANALYSIS_FAILED &&
              trnmpa::kOpenFailed == TRN_AUDIO_READER_OPEN_FAILED &&
              trnmpa::kBadRequest == TRN_AUDIO_READER_BAD_REQUEST &&
              trnmpa::kDecodeFailed == TRN_AUDIO_READER_DECODE_FAILED &&
              trnmpa::kMediaNotOpened == TRN_AUDIO_READER_MEDIA_NOT_OPENED &&
              trnmpa::kNotOpen == TRN_AUDIO_READER_NOT_OPEN);

constexpr trnmpa::EngineFailures kFailures = {.missing = TRN_AUDIO_READER_NO_ENGINE,
                                              .thrown = TRN_AUDIO_READER_EXCEPTION};

} // namespace

ITRN_AUDIO_READER_BASE::ITRN_AUDIO_READER_BASE() = default;
ITRN_AUDIO_READER_BASE::ITRN_AUDIO_READER_BASE(const ITRN_AUDIO_READER_BASE&) = default;
ITRN_AUDIO_READER_BASE& ITRN_AUDIO_READER_BASE::operator=(const ITRN_AUDIO_READER_BASE&) = default;
ITRN_AUDIO_READER_BASE::~ITRN_AUDIO_READER_BASE() = default;

TRN_MpAudioFileReader2::TRN_MpAudioFileReader2() = default;

TRN_MpAudioFileReader2::TRN_MpAudioFileReader2(const TRN_MpAudioFileReader2& other)
    : ITRN_AUDIO_READER_BASE(other), engine_(trnmpa::ShareEngine(other.engine_)) {}

TRN_MpAudioFileReader2& TRN_MpAudioFileReader2::operator=(const TRN_MpAudioFileReader2& other) {
    if (this != &other)
        trnmpa::ReplaceEngine(engine_, trnmpa::ShareEngine(other.engine_));
    return *this;
}

TRN_MpAudioFileReader2::~TRN_MpAudioFileReader2() {
    trnmpa::ReplaceEngine(engine_, nullptr);
}

std::int32_t TRN_MpAudioFileReader2::Initialize() {
    Release();
    trnmpa::Guarded([this] {
        engine_ = std::make_unique<trnmpa::KwMpAudioReader2>().release();
        return 1;
    });
    return WithEngine(
        engine_, [](auto& engine) { return engine.Initialize(); }, kFailures);
}

std::int32_t TRN_MpAudioFileReader2::AddRef() {
    return 1;
}

std::int32_t TRN_MpAudioFileReader2::GetRef() {
    return 1;
}

std::int32_t TRN_MpAudioFileReader2::Release() {
    trnmpa::ReplaceEngine(engine_, nullptr);
    return 1;
}

std::int32_t TRN_MpAudioFileReader2::SetInputFile(CComBSTR path) {
    return WithEngine(
        engine_, [&](auto& engine) { return engine.SetInputFile(std::wstring(os::CharactersOf(path))); },
        kFailures);
}

std::int32_t TRN_MpAudioFileReader2::GetSamples(AudioReaderDataIn request, unsigned char** data,
                                                std::int32_t& size, unsigned long* extra) {
    size = 0;
    unsigned char* pcm = nullptr;
    const std::int32_t result = WithEngine(
        engine_, [&](auto& engine) { return engine.GetSamples(request, pcm, size, extra); }, kFailures);
    if (data != nullptr)
        *data = pcm;
    return result;
}

std::int32_t TRN_MpAudioFileReader2::GetItemInfo(void* info) {
    return WithEngine(
        engine_,
        [info](auto& engine) { return engine.GetStreamInfo(static_cast<KW_MEDIA_BASE_INFO_ST*>(info)); },
        kFailures);
}

std::int32_t TRN_MpAudioFileReader2::ConfigureObj(std::int32_t, void*, std::int32_t, void*, std::int32_t) {
    return 1;
}
