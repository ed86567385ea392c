#include "reader/frame_agreement.h"

namespace trnmpa {

bool FramesAgree(const AMPFrameInfo& x, const AMPFrameInfo& y) {
    return x.synced == y.synced && x.layer == y.layer && x.version == y.version &&
           x.sampleRate == y.sampleRate && x.stereo == y.stereo && x.bitsPerSample == y.bitsPerSample &&
           x.pcmBytes == y.pcmBytes;
}

void ReadAgreeingHeader(IAMPDecoder& decoder, const AMPFrameInfo& stream) {
    AMPFrameInfo info;
    do {
        decoder.ReadFrameHeader();
        decoder.GetFrameInfo(&info);
    } while (!FramesAgree(info, stream));
}

} // namespace trnmpa
