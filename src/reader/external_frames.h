#pragma once

#include "reader/frame_source.h"
#include "trnlameMp3Decoder/lame_mp3_decoder.h"

#include <array>

namespace trnmpa {

/// The external decoder, which reads the media file itself.
class ExternalFrames final : public FrameSource {
public:
    ExternalFrames();

    /// False where the decoder's library cannot be loaded.
    bool HasLibrary() const { return hasLibrary_; }

    void SetFile(const std::wstring& path, std::uint32_t blockKiB) override;
    /// True: a file that is not there shows as one without frames.
    bool Open() override { return true; }
    HeaderSource& Bytes() override { return bytes_; }
    std::int64_t Length() override { return decoder_.GetFileLen(); }
    bool FindFirstFrame(AMPFrameInfo& frame, std::int64_t& offset) override;
    AMPFrameInfo DescribeFrameAt(std::int64_t offset) override;
    void MoveTo(std::int64_t offset) override { decoder_.SetNewFilePos(offset); }
    void JumpTo(std::int64_t offset, std::int64_t frame) override;
    void Skip(const AMPFrameInfo& stream) override;
    Outcome Decode(const AMPFrameInfo& stream, std::int16_t* pcm) override;
    std::int32_t Delay(std::int32_t layer) const override;
    bool HalvesLayer3() const override { return false; }
    bool DeservesRetries() const override { return true; }

private:
    class FileBytes final : public HeaderSource {
    public:
        explicit FileBytes(TRN_LameMp3Dec& decoder) : decoder_(decoder) {}
        std::size_t Read(std::span<std::uint8_t> destination) override;
        std::int64_t Position() override { return position_; }
        bool SetPosition(std::int64_t position) override;

    private:
        TRN_LameMp3Dec& decoder_;
        std::int64_t position_ = 0;
    };

    TRN_LameMp3Dec decoder_;
    bool hasLibrary_;
    FileBytes bytes_{decoder_};
    std::array<std::int16_t, kMaximumFramePcmValues> unused_ = {};
};

} // namespace trnmpa
