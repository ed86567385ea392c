#include "harness/sample_script.h"

#include "reader/result_codes.h"

#include <algorithm>

namespace fuzz {

namespace {

constexpr std::uint32_t kMostSamples = 1 << 18;
constexpr std::size_t kRefusedBytes = std::size_t{1} << 31;

bool IsResult(std::int32_t result) {
    using namespace trnmpa;
    constexpr std::int32_t kResults[] = {
        0,           kSuccess,    kUnexpectedException, kNoPcmBuffer,    kNoDecoder, kAnalysisFailed,
        kOpenFailed, kBadRequest, kDecodeFailed,        kMediaNotOpened, kNotOpen,   kNoFrameBufferReader};
    return std::ranges::find(kResults, result) != std::end(kResults);
}

} // namespace

std::uint32_t TakeSampleCount(Input& script) {
    const std::uint8_t kind = script.U8();
    if (kind < 0xC0)
        return kind * 32u;
    return kind < 0xF8 ? script.U32() % kMostSamples : 0xFFFFFFFFu - script.U8();
}

std::int64_t TakeSamplePosition(Input& script) {
    const std::uint8_t kind = script.U8();
    if (kind < 0x80)
        return kind * std::int64_t{100};
    return kind < 0xF0 ? script.U32() % kMostSamples : script.I64();
}

bool IsWorthARead(std::size_t pcmBytes) {
    return pcmBytes <= kMostSamples * std::size_t{16} || pcmBytes >= kRefusedBytes;
}

void SampleScript::Open() {
    const auto watched = [&](const char* name, auto operation) {
        const std::int32_t result = Watched(name, media_.WorkFor(), operation);
        Require(IsResult(result), "an unknown result");
        return result == 1;
    };
    next_ = 0;
    if (watched("Initialize", [&] { return reader_.Initialize(); }) &&
        watched("SetInputFile", [&] { return reader_.SetInputFile(media_.Path()); }))
        GetInfo(true);
}

void SampleScript::GetInfo(bool wantsRecord) {
    const std::int32_t result = Watched("GetStreamInfo", media_.WorkFor(), [&] {
        return reader_.GetStreamInfo(wantsRecord ? &info_ : nullptr);
    });
    Require(IsResult(result), "an unknown result of GetStreamInfo");
}

void SampleScript::Read(std::int64_t start, std::uint32_t count) {
    AudioReaderDataIn request;
    request.startSample = start;
    request.sampleCount = count;
    unsigned char* data = nullptr;
    std::int32_t size = -1;
    const std::size_t bytes = std::size_t{count} * info_.audioFormat.nBlockAlign;
    if (!IsWorthARead(bytes))
        return;
    const std::size_t answer = bytes < kRefusedBytes ? bytes : 0;
    const std::int32_t result = Watched("GetSamples", media_.WorkFor(answer),
                                        [&] { return reader_.GetSamples(request, data, size, nullptr); });
    Require(IsResult(result), "an unknown result of GetSamples");
    if (result != trnmpa::kSuccess) {
        Require(size == 0 && data == nullptr, "a failed read gives PCM");
        return;
    }
    Require(start >= 0 && count > 0, "a bad request succeeds");
    Require(data != nullptr && static_cast<std::size_t>(size) == bytes, "a read gives another size");
    Touch({data, bytes});
    next_ = start + std::min<std::int64_t>(count, INT64_MAX - start);
}

void SampleScript::Step(Input& script) {
    switch (script.U8() % 16) {
    case 0:
        Open();
        break;
    case 1:
        Require(Watched("Close", media_.WorkFor(), [&] { return reader_.Close(); }) == 1, "Close");
        break;
    case 2:
        Require(IsResult(Watched("Initialize", media_.WorkFor(), [&] { return reader_.Initialize(); })),
                "an unknown result of Initialize");
        break;
    case 3:
        Require(IsResult(Watched("SetInputFile", media_.WorkFor(),
                                 [&] { return reader_.SetInputFile(media_.Path()); })),
                "an unknown result of SetInputFile");
        break;
    case 4:
        GetInfo(false);
        break;
    case 5:
        GetInfo(true);
        break;
    case 6:
    case 7:
    case 8:
    case 9:
        Read(next_, TakeSampleCount(script));
        break;
    default: {
        const std::int64_t start = TakeSamplePosition(script);
        Read(start, TakeSampleCount(script));
        break;
    }
    }
}

} // namespace fuzz
