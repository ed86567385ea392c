#include "reader/create_frames.h"

namespace trnmpa {

std::unique_ptr<FrameSource> CreateExternalFrames() {
    return nullptr;
}

} // namespace trnmpa
