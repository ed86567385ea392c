/// Which decoder the module uses, and what follows from it.
#pragma once

#include "mpa/stream_start.h"

#include <cstdint>

namespace mpatool {

enum class Decoder { kBuiltIn, kExternal };

/// Samples per channel that the sample reader leaves out at the start of a stream of `layer`, read without an
/// index.
constexpr std::int32_t DelayOf(Decoder decoder, std::int32_t layer) {
    return decoder == Decoder::kExternal ? trnmpa::ExternalDecoderDelay(layer)
                                         : trnmpa::BuiltInDecoderDelay(layer);
}

} // namespace mpatool
