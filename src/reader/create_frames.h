#pragma once

#include "reader/frame_source.h"

#include <memory>

namespace trnmpa {

/// The external decoder's frames; null in a build without it and where its library cannot be loaded.
std::unique_ptr<FrameSource> CreateExternalFrames();

} // namespace trnmpa
