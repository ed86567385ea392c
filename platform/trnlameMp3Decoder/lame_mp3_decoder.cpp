#include "trnlameMp3Decoder/lame_mp3_decoder.h"

#include "trnlameMp3Decoder/frame_decoder.h"
#include "trnlameMp3Decoder/frame_file.h"

#include <climits>
#include <cstddef>
#include <exception>
#include <optional>
#include <span>
#include <vector>

struct TRN_LameMp3Dec::State {
    mp3::FrameFile file;
    mp3::FrameDecoder decoder;
    /// What StartDec found; the format also when a decode found the first frame.
    Mp3StreamInfo info;
    std::optional<mp3::StreamFormat> format;
    unsigned char* output = nullptr;
    std::vector<std::uint8_t> frame;

    std::optional<mp3::FramePlace> NextFrame();
    std::size_t DecodeNext();
};

namespace {

Mp3StreamInfo Describe(const mp3::FrameHeader& header) {
    Mp3StreamInfo info;
    info.synced = 1;
    info.layer = static_cast<std::uint8_t>(header.format.layer);
    info.version = header.format.lowRate ? 2 : 1;
    info.frameBytes = static_cast<std::int32_t>(header.frameBytes);
    info.bitRate = header.bitRate;
    info.sampleRate = header.format.sampleRate;
    info.stereo = header.format.channels == 2 ? 1 : 0;
    info.bitsPerSample = 16;
    info.pcmBytes = static_cast<std::int32_t>(header.format.PcmBytes());
    return info;
}

/// Runs an operation so that nothing is thrown out of it: 0 then.
template <typename Operation>
std::int32_t ZeroWhenThrown(Operation operation) {
    try {
        return operation();
    } catch (const std::exception&) {
        return 0;
    }
}

} // namespace

/// The next whole frame, read into `frame`.
std::optional<mp3::FramePlace> TRN_LameMp3Dec::State::NextFrame() {
    const std::int64_t position = file.Position();
    const std::optional<mp3::FramePlace> place =
        format ? file.FindFrame(position, *format) : file.FindFirstFrame(position);
    if (!place || !file.SetPosition(place->position))
        return std::nullopt;
    frame.resize(place->header.frameBytes);
    if (file.Read(frame) == frame.size())
        return place;
    file.SetPosition(place->position);
    return std::nullopt;
}

/// The bytes of PCM that went to the output buffer.
std::size_t TRN_LameMp3Dec::State::DecodeNext() {
    if (output == nullptr || !decoder.IsOpen())
        return 0;
    const std::optional<mp3::FramePlace> place = NextFrame();
    if (!place)
        return 0;
    format = place->header.format;
    const std::span<std::uint8_t> pcm(output, format->PcmBytes());
    return decoder.Decode(place->header, frame, pcm) ? pcm.size() : 0;
}

TRN_LameMp3Dec::TRN_LameMp3Dec() : state_(std::make_unique<State>()) {}

TRN_LameMp3Dec::~TRN_LameMp3Dec() = default;

std::int32_t TRN_LameMp3Dec::Initialize() {
    return ZeroWhenThrown([this] { return state_->decoder.Open() ? 1 : 0; });
}

std::int32_t TRN_LameMp3Dec::SetInputFile(CComBSTR path) {
    return ZeroWhenThrown([&] {
        state_->format.reset();
        state_->info = {};
        state_->decoder.Reset(0);
        return state_->file.Open(path) ? 1 : 0;
    });
}

std::int32_t TRN_LameMp3Dec::SetOutBuf(unsigned char* buffer) {
    state_->output = buffer;
    return 1;
}

std::int32_t TRN_LameMp3Dec::StartDec() {
    return ZeroWhenThrown([this] {
        state_->format.reset();
        state_->info = {};
        state_->decoder.Reset(0);
        const std::int64_t position = state_->file.Position();
        const std::optional<mp3::FramePlace> place = state_->file.FindFirstFrame(position);
        state_->file.SetPosition(position);
        if (!place)
            return 0;
        state_->format = place->header.format;
        state_->info = Describe(place->header);
        return 1;
    });
}

std::int32_t TRN_LameMp3Dec::GetStreamInfo(Mp3StreamInfo* info) {
    if (info == nullptr)
        return 0;
    *info = state_->info;
    return state_->info.synced;
}

std::int32_t TRN_LameMp3Dec::GetTagSize() {
    return ZeroWhenThrown([this] {
        const std::int64_t position = state_->file.Position();
        const std::optional<mp3::FramePlace> place = state_->file.FindFirstFrame(0);
        state_->file.SetPosition(position);
        return place && place->position <= INT_MAX ? static_cast<std::int32_t>(place->position) : 0;
    });
}

std::int32_t TRN_LameMp3Dec::SetNewFilePos(std::int64_t position) {
    return state_->file.SetPosition(position) ? 1 : 0;
}

std::int64_t TRN_LameMp3Dec::GetFileLen() {
    return state_->file.Length();
}

std::int32_t TRN_LameMp3Dec::ReadFromFile(unsigned char* buffer, std::int32_t count) {
    if (buffer == nullptr || count < 0)
        return 0;
    const std::span<std::uint8_t> bytes(buffer, static_cast<std::size_t>(count));
    return ZeroWhenThrown([&] { return state_->file.Read(bytes) == bytes.size() ? 1 : 0; });
}

std::int32_t TRN_LameMp3Dec::DecodeMP3(std::int32_t& size) {
    size = 0;
    return ZeroWhenThrown([&] {
        size = static_cast<std::int32_t>(state_->DecodeNext());
        return size > 0 ? 1 : 0;
    });
}

std::int32_t TRN_LameMp3Dec::ResetDecodeBuf(std::int64_t frameNumber) {
    state_->decoder.Reset(frameNumber);
    return 1;
}
