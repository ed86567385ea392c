#pragma once

#include "decoder/decoder_interface.h"
#include "fileio/frame_buffer_reader.h"
#include "mpa/file_header_sources.h"
#include "reader/frame_source.h"

#include <array>
#include <memory>
#include <string>

namespace trnmpa {

/// The built-in decoder, fed by the module's own byte source. The end of the data is thrown.
class BuiltInFrames : public FrameSource {
public:
    /// Throws AMP_ERR_INTERNAL when there is no memory for the decoder.
    BuiltInFrames();

    void SetFile(const std::wstring& path, std::uint32_t blockKiB) override;
    bool Open() override { return media_.Open(path_) > 0; }
    HeaderSource& Bytes() override { return bytes_; }
    std::int64_t Length() override { return media_.GetLength(); }
    bool FindFirstFrame(AMPFrameInfo& frame, std::int64_t& offset) override;
    AMPFrameInfo DescribeFrameAt(std::int64_t offset) override;
    void MoveTo(std::int64_t offset) override { media_.SetPosition(offset); }
    void JumpTo(std::int64_t offset, std::int64_t frame) override;
    void Skip(const AMPFrameInfo& stream) override;
    Outcome Decode(const AMPFrameInfo& stream, std::int16_t* pcm) override;
    std::int32_t Delay(std::int32_t layer) const override;
    bool HalvesLayer3() const override { return true; }
    bool DeservesRetries() const override { return false; }

    /// Has the decoder read the first frame from `offset` on; FindFirstFrame without the search before.
    bool ReadFirstFrame(std::int64_t offset, AMPFrameInfo& frame, std::int64_t& start);

private:
    std::wstring path_;
    CMpAudioFrameBufferReader media_;
    FrameBufferHeaderSource bytes_{media_};
    std::unique_ptr<IAMPDecoder> decoder_;
    std::array<std::int16_t, kMaximumFramePcmValues> unused_ = {};
};

} // namespace trnmpa
