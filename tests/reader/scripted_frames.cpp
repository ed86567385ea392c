#include "reader/scripted_frames.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace test {

namespace {

AMPFrameInfo Description(int layer) {
    AMPFrameInfo info;
    info.synced = 1;
    info.layer = static_cast<std::uint8_t>(layer);
    info.version = 1;
    info.frameBytes = ScriptedFrames::kFrameBytes;
    info.bitRate = 128'000;
    info.sampleRate = 44'100;
    info.stereo = 1;
    info.bitsPerSample = 16;
    info.pcmBytes = 4 * ScriptedFrames::kSamplesPerFrame;
    return info;
}

[[noreturn]] void Throw(Fault fault) {
    if (fault == Fault::kEnd)
        throw static_cast<int>(AMP_ERR_END_OF_STREAM);
    if (fault == Fault::kCode)
        throw 7;
    throw std::runtime_error("a fault");
}

} // namespace

std::int64_t Script::TriesOf(std::int64_t frame) const {
    return std::count(decodes.begin(), decodes.end(), frame);
}

void Script::ForgetCalls() {
    jumps.clear();
    decodes.clear();
}

Pcm ScriptedFrames::FramePcm(std::int64_t frame) {
    Pcm pcm(2 * kSamplesPerFrame);
    for (std::size_t i = 0; i < pcm.size(); ++i) {
        const std::uint64_t mixed =
            (static_cast<std::uint64_t>(frame) * pcm.size() + i + 1) * 0x9E3779B97F4A7C15u;
        pcm[i] = static_cast<std::int16_t>(static_cast<std::int64_t>(mixed >> 49) - 16384);
    }
    return pcm;
}

std::size_t ScriptedFrames::Zeros::Read(std::span<std::uint8_t> destination) {
    std::ranges::fill(destination, std::uint8_t{0});
    return destination.size();
}

bool ScriptedFrames::FindFirstFrame(AMPFrameInfo& frame, std::int64_t& offset) {
    if (script_.firstFrameThrows)
        Throw(Fault::kCode);
    frame = Description(script_.layer);
    offset = 0;
    return script_.hasFirstFrame;
}

AMPFrameInfo ScriptedFrames::DescribeFrameAt(std::int64_t offset) {
    MoveTo(offset);
    return Description(script_.layer);
}

void ScriptedFrames::JumpTo(std::int64_t offset, std::int64_t frame) {
    script_.jumps.push_back({offset, frame});
    MoveTo(offset);
    last_ = frame == 0 ? -1 : -2;
}

void ScriptedFrames::Skip(const AMPFrameInfo&) {
    ++next_;
    last_ = -2;
}

trnmpa::FrameSource::Outcome ScriptedFrames::Decode(const AMPFrameInfo& stream, std::int16_t* pcm) {
    script_.decodes.push_back(next_);
    if (next_ >= script_.frames) {
        if (!script_.isExternal)
            Throw(Fault::kEnd);
        return {0, false};
    }
    bool isGood = true;
    if (const auto found = script_.faults.find(next_); found != script_.faults.end()) {
        Script::Plan& plan = found->second;
        const bool acts = plan.times != 0;
        plan.times -= plan.times > 0 ? 1 : 0;
        if (acts && plan.fault == Fault::kNothing)
            return {0, false};
        if (acts && plan.fault != Fault::kBad)
            Throw(plan.fault);
        isGood = !acts;
    }
    Pcm right = FramePcm(next_);
    if (last_ != next_ - 1)
        std::ranges::transform(right, right.begin(),
                               [](std::int16_t value) { return static_cast<std::int16_t>(value ^ 1); });
    std::ranges::copy(right, pcm);
    last_ = next_++;
    return {stream.pcmBytes, isGood};
}

std::int32_t ScriptedEngine::Open(const std::wstring& path) {
    std::int32_t result = reader_.Initialize();
    if (result == trnmpa::kSuccess)
        result = reader_.SetInputFile(path);
    KW_MEDIA_BASE_INFO_ST info;
    return result == trnmpa::kSuccess ? reader_.GetStreamInfo(&info) : result;
}

ScriptedEngine::Answer ScriptedEngine::Ask(std::int64_t start, std::uint32_t count) {
    AudioReaderDataIn request;
    request.startSample = start;
    request.sampleCount = count;
    unsigned char* data = nullptr;
    Answer answer;
    answer.result = reader_.GetSamples(request, data, answer.size, nullptr);
    answer.hasData = data != nullptr;
    answer.pcm.resize(static_cast<std::size_t>(std::max(answer.size, 0)) / sizeof(std::int16_t));
    if (answer.hasData)
        std::memcpy(answer.pcm.data(), data, answer.pcm.size() * sizeof(std::int16_t));
    return answer;
}

} // namespace test
