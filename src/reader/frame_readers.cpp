#include "trnmpafileread/frame_readers.h"

#include "plugin/boundary.h"
#include "plugin/engine_users.h"
#include "reader/slice_reader.h"

#include <memory>
#include <string>

namespace {

using trnmpa::Guarded;
using trnmpa::KwMpAudioReader;
using trnmpa::WithEngine;

/// A new engine, initialised; null when memory runs out.
KwMpAudioReader* CreateEngine() {
    std::unique_ptr<KwMpAudioReader> engine;
    const std::int32_t created = Guarded([&] {
        engine = std::make_unique<KwMpAudioReader>();
        return engine->Initialize();
    });
    return created == 1 ? engine.release() : nullptr;
}

std::int32_t SetEngineFile(KwMpAudioReader* engine, const CComBSTR& path) {
    return WithEngine(
        engine, [&](auto& present) { return present.SetInputFile(std::wstring(os::CharactersOf(path))); });
}

} // namespace

TRN_MpAudioFileReader::TRN_MpAudioFileReader() = default;

TRN_MpAudioFileReader::TRN_MpAudioFileReader(const TRN_MpAudioFileReader& other)
    : engine_(trnmpa::ShareEngine(other.engine_)) {}

TRN_MpAudioFileReader& TRN_MpAudioFileReader::operator=(const TRN_MpAudioFileReader& other) {
    if (this != &other)
        trnmpa::ReplaceEngine(engine_, trnmpa::ShareEngine(other.engine_));
    return *this;
}

TRN_MpAudioFileReader::~TRN_MpAudioFileReader() {
    trnmpa::ReplaceEngine(engine_, nullptr);
}

std::int32_t TRN_MpAudioFileReader::Initialize() {
    if (engine_ == nullptr)
        engine_ = CreateEngine();
    return engine_ != nullptr ? 1 : 0;
}

std::int32_t TRN_MpAudioFileReader::SetPerPCMFrameTime(std::int64_t time) {
    return WithEngine(engine_, [&](auto& engine) { return engine.SetPerPcmFrameTime(time); });
}

std::int32_t TRN_MpAudioFileReader::SetInputFile(CComBSTR path) {
    return SetEngineFile(engine_, path);
}

std::int32_t TRN_MpAudioFileReader::GetOriginalStreamInfo(WAVEFORMATEX& format) {
    return WithEngine(engine_, [&](auto& engine) { return engine.GetOriginalStreamInfo(format); });
}

std::int32_t TRN_MpAudioFileReader::SetOutputWAVEFormat(WAVEFORMATEX& format) {
    return WithEngine(engine_, [&](auto& engine) { return engine.SetOutputFormat(format); });
}

std::int32_t TRN_MpAudioFileReader::StartRead() {
    return WithEngine(engine_, [](auto& engine) { return engine.StartRead(); });
}

std::int32_t TRN_MpAudioFileReader::SeekTo(std::uint32_t slice) {
    return WithEngine(engine_, [&](auto& engine) { return engine.SeekTo(slice); });
}

std::int32_t TRN_MpAudioFileReader::ReadFrame(unsigned char** data, std::int32_t& length,
                                              WAVEFORMATEX* format, std::int32_t& atEnd) {
    trnmpa::PcmSlice slice;
    const std::int32_t result =
        data != nullptr ? WithEngine(engine_, [&](auto& engine) { return engine.ReadFrame(slice); }) : 0;
    if (data != nullptr)
        *data = slice.data;
    length = slice.length;
    if (format != nullptr)
        *format = slice.format;
    atEnd = slice.atEnd ? 1 : 0;
    return result;
}

std::int32_t TRN_MpAudioFileReader::StopRead() {
    return engine_ != nullptr ? 1 : 0;
}

TRN_MpaFileCompReader::TRN_MpaFileCompReader() : engine_(CreateEngine()) {}

TRN_MpaFileCompReader::TRN_MpaFileCompReader(const TRN_MpaFileCompReader& other)
    : engine_(trnmpa::ShareEngine(other.engine_)) {}

TRN_MpaFileCompReader& TRN_MpaFileCompReader::operator=(const TRN_MpaFileCompReader& other) {
    if (this != &other)
        trnmpa::ReplaceEngine(engine_, trnmpa::ShareEngine(other.engine_));
    return *this;
}

TRN_MpaFileCompReader::~TRN_MpaFileCompReader() {
    StopRead();
    trnmpa::ReplaceEngine(engine_, nullptr);
}

std::int32_t TRN_MpaFileCompReader::Initialize() {
    return 1;
}

std::int32_t TRN_MpaFileCompReader::SetInputFile(CComBSTR path) {
    return SetEngineFile(engine_, path);
}

std::int32_t TRN_MpaFileCompReader::StartRead() {
    return WithEngine(engine_, [](auto& engine) { return engine.StartRead(); });
}

std::int32_t TRN_MpaFileCompReader::GetOriginalStreamInfo(tag_KW_MpaStreamInfo& info) {
    return WithEngine(engine_, [&](auto& engine) { return engine.GetOriginalStreamInfo(info); });
}

std::int32_t TRN_MpaFileCompReader::SeekTo(std::int64_t time, unsigned long& position) {
    std::uint32_t found = 0;
    const std::int32_t result =
        WithEngine(engine_, [&](auto& engine) { return engine.PositionByTime(time, found); });
    if (result == 1)
        position = found;
    return result;
}

std::int32_t TRN_MpaFileCompReader::ReadAudioSample(unsigned char*, std::int32_t&) {
    return 0;
}

std::int32_t TRN_MpaFileCompReader::StopRead() {
    return 1;
}
