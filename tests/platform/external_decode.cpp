#include "platform/external_decode.h"

#include "trnlameMp3Decoder/frame_header.h"

#include <gtest/gtest.h>

#include <cstring>
#include <span>

namespace test {

ExternalDecode::ExternalDecode(const std::filesystem::path& path) {
    EXPECT_EQ(decoder_.Initialize(), 1);
    EXPECT_EQ(decoder_.SetInputFile(os::ToAutomationString(Wide(path))), 1);
    EXPECT_EQ(decoder_.SetOutBuf(output_.data()), 1);
}

bool ExternalDecode::Start() {
    return decoder_.StartDec() == 1 && decoder_.SetNewFilePos(decoder_.GetTagSize()) == 1;
}

Pcm ExternalDecode::Frame() {
    std::int32_t size = -1;
    const std::int32_t result = decoder_.DecodeMP3(size);
    EXPECT_EQ(result, size > 0 ? 1 : 0);
    EXPECT_GE(size, 0);
    EXPECT_LE(size, 4608);
    Pcm pcm(static_cast<std::size_t>(size) / 2);
    if (!pcm.empty())
        std::memcpy(pcm.data(), output_.data(), pcm.size() * 2);
    return pcm;
}

std::vector<Pcm> ExternalDecode::Rest() {
    std::vector<Pcm> frames;
    for (Pcm frame = Frame(); !frame.empty(); frame = Frame())
        frames.push_back(frame);
    return frames;
}

void ExternalDecode::GoTo(std::int64_t position, std::int64_t frameNumber) {
    EXPECT_EQ(decoder_.SetNewFilePos(position), 1);
    EXPECT_EQ(decoder_.ResetDecodeBuf(frameNumber), 1);
}

std::vector<PlacedFrame> PlaceFrames(const Bytes& stream, std::size_t start) {
    std::vector<PlacedFrame> frames;
    for (std::size_t at = start; at + mp3::kHeaderBytes <= stream.size();) {
        const auto header = mp3::ParseHeader(std::span(stream).subspan(at).first<mp3::kHeaderBytes>());
        if (!header || header->frameBytes > stream.size() - at)
            break;
        frames.push_back({static_cast<std::int64_t>(at), static_cast<std::int64_t>(header->frameBytes)});
        at += header->frameBytes;
    }
    return frames;
}

} // namespace test
