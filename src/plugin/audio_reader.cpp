#include "trnmpafileread/audio_reader.h"

#include "plugin/boundary.h"
#include "plugin/engine_users.h"
#include "reader/sample_reader.h"

#include <memory>
#include <string>

namespace {

/// Runs an operation of the engine; without one its code, and its code for what is thrown.
template <typename Operation>
std::int32_t WithEngine(trnmpa::KwMpAudioReader2* engine, Operation&& operation) noexcept {
    if (engine == nullptr)
        return TRN_AUDIO_READER_NO_ENGINE;
    try {
        return operation();
    } catch (...) {
        return TRN_AUDIO_READER_EXCEPTION;
    }
}

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
    std::unique_ptr<trnmpa::KwMpAudioReader2> engine;
    trnmpa::Guarded([&] {
        engine = std::make_unique<trnmpa::KwMpAudioReader2>();
        return 1;
    });
    engine_ = engine.release();
    return WithEngine(engine_, [this] { return engine_->Initialize(); });
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
    return WithEngine(engine_, [&] { return engine_->SetInputFile(std::wstring(os::CharactersOf(path))); });
}

std::int32_t TRN_MpAudioFileReader2::GetSamples(AudioReaderDataIn request, unsigned char** data,
                                                std::int32_t& size, unsigned long* extra) {
    size = 0;
    unsigned char* pcm = nullptr;
    const std::int32_t result =
        WithEngine(engine_, [&] { return engine_->GetSamples(request, pcm, size, extra); });
    if (data != nullptr)
        *data = pcm;
    return result;
}

std::int32_t TRN_MpAudioFileReader2::GetItemInfo(void* info) {
    return WithEngine(engine_,
                      [&] { return engine_->GetStreamInfo(static_cast<KW_MEDIA_BASE_INFO_ST*>(info)); });
}

std::int32_t TRN_MpAudioFileReader2::ConfigureObj(std::int32_t, void*, std::int32_t, void*, std::int32_t) {
    return 1;
}
