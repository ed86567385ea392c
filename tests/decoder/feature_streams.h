/// Synthetic streams that between them use every feature of the decoder.
#pragma once

#include "support/bitstream/stream.h"

#include <string>
#include <vector>

namespace test {

struct FeatureStream {
    std::string name;
    bitstream::StreamOptions options;
};

std::vector<FeatureStream> Layer3FeatureStreams();
std::vector<FeatureStream> Layer2FeatureStreams();

} // namespace test
