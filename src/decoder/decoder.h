/// The built-in decoder.
#pragma once

#include "decoder/bitstream.h"
#include "decoder/decoder_interface.h"
#include "decoder/frame_header.h"
#include "decoder/layer3/layer3.h"
#include "decoder/layer3/side_info.h"
#include "decoder/synthesis.h"

namespace trnmpa {

/// Layers II and III, MPEG-1, MPEG-2 and MPEG 2.5, to signed 16-bit PCM. Layer III comes out at half of full
/// scale.
class AMPDecoder final : public IAMPDecoder, private AMPBitstream {
public:
    const char* GetIdentification() override;
    void Reset() override;
    void SetBitsource(IAMPBitsource* source) override;
    void SetOutputBuffer(short* pcm) override;
    unsigned int GetOutputSize() override;
    unsigned int GetFrameInfo(AMPFrameInfo* info) override;
    const char* GetErrorText(int code) override;
    void Close() override;
    void ReadFrameHeader() override;
    void SkipFrame() override;
    bool DecodeFrame() override;

private:
    bool FindHeader(HeaderBytes& bytes);
    void ReadCrc();
    void ReadSideInfo();
    int DecodeBody(int bodyBytes);

    short* output_ = nullptr;
    unsigned int outputSize_ = 0;
    DecoderHeader header_;
    int bodyBytes_ = 0; ///< of the current frame, not yet read
    bool synced_ = true;
    bool headerLocked_ = false; ///< set by the first accepted header for the life of the object
    SideInfo sideInfo_;
    SynthesisBank synthesis_;
    Layer3Decoder layer3_;
};

} // namespace trnmpa
