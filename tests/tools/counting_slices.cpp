// TRN_MpAudioFileReader of the counting module: slices of counted samples, 44.1 kHz stereo.

#include "os/automation_string.h"
#include "tools/counted_sample.h"
#include "tools/counting_plan.h"
#include "trnmpafileread/frame_readers.h"

#include <string>
#include <vector>

namespace trnmpa {

class KwMpAudioReader {
public:
    test::CountingPlan plan;
    std::int64_t time = 0;
    std::int64_t slice = 0;
    std::vector<std::int16_t> pcm;
};

} // namespace trnmpa

namespace {

constexpr std::uint32_t kRate = 44100;
constexpr std::uint16_t kChannels = 2;

} // namespace

TRN_MpAudioFileReader::TRN_MpAudioFileReader() : engine_(new trnmpa::KwMpAudioReader) {}

TRN_MpAudioFileReader::~TRN_MpAudioFileReader() {
    delete engine_;
}

std::int32_t TRN_MpAudioFileReader::Initialize() {
    return 1;
}

std::int32_t TRN_MpAudioFileReader::SetPerPCMFrameTime(std::int64_t time) {
    engine_->time = time;
    return 1;
}

std::int32_t TRN_MpAudioFileReader::SetInputFile(CComBSTR path) {
    engine_->plan = test::ReadCountingPlan(std::wstring(os::CharactersOf(path)));
    return 1;
}

std::int32_t TRN_MpAudioFileReader::GetOriginalStreamInfo(WAVEFORMATEX& format) {
    format.nSamplesPerSec = kRate;
    format.nChannels = kChannels;
    format.wBitsPerSample = 16;
    return 1;
}

std::int32_t TRN_MpAudioFileReader::SetOutputWAVEFormat(WAVEFORMATEX&) {
    return 1;
}

std::int32_t TRN_MpAudioFileReader::StartRead() {
    return static_cast<std::int32_t>(engine_->plan["open"]);
}

std::int32_t TRN_MpAudioFileReader::SeekTo(std::uint32_t slice) {
    engine_->slice = slice;
    return 1;
}

std::int32_t TRN_MpAudioFileReader::ReadFrame(unsigned char** data, std::int32_t& length, WAVEFORMATEX*,
                                              std::int32_t& atEnd) {
    const std::int64_t slice = engine_->slice++;
    atEnd = slice >= engine_->plan["slices"] ? 1 : 0;
    length = 0;
    *data = nullptr;
    if (atEnd == 1 || slice >= engine_->plan["sliceFail"])
        return 0;
    engine_->pcm.clear();
    const auto start = [&](std::int64_t number) { return number * engine_->time * kRate / 10'000'000; };
    for (std::int64_t sample = start(slice); sample < start(slice + 1); ++sample) {
        for (int channel = 0; channel < kChannels; ++channel)
            engine_->pcm.push_back(test::CountedSample(sample, channel));
    }
    *data = reinterpret_cast<unsigned char*>(engine_->pcm.data());
    length = static_cast<std::int32_t>(engine_->pcm.size() * sizeof(std::int16_t));
    return 1;
}
