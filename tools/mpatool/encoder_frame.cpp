#include "mpatool/encoder_frame.h"

#include "mpa/frame_walk.h"

#include <algorithm>
#include <string_view>

namespace mpatool {

std::optional<std::int64_t> EncodersStreamBytes(trnmpa::SourceWindow& window,
                                                const trnmpa::MpaFrameHeader& frame) {
    constexpr std::size_t kNameBytes = 4;
    constexpr std::size_t kFieldBytes = 4;
    constexpr std::int64_t kHasFrames = 1;
    constexpr std::int64_t kHasBytes = 2;
    if (frame.layer != 3)
        return std::nullopt;
    const std::int64_t offset = frame.firstFrameOffset +
                                static_cast<std::int64_t>(trnmpa::kFrameHeaderBytes) +
                                trnmpa::SideInformationBytes(frame);
    const auto bytes = window.At(offset, kNameBytes + 3 * kFieldBytes);
    if (bytes.size() < kNameBytes + 3 * kFieldBytes)
        return std::nullopt;
    const std::string_view name(reinterpret_cast<const char*>(bytes.data()), kNameBytes);
    if (name != "Info" && name != "Xing")
        return std::nullopt;
    const auto field = [&](std::size_t number) {
        std::int64_t value = 0;
        for (const std::uint8_t byte : bytes.subspan(kNameBytes + number * kFieldBytes, kFieldBytes))
            value = value << 8 | byte;
        return value;
    };
    const std::int64_t flags = field(0);
    if ((flags & kHasBytes) == 0)
        return std::nullopt;
    return field((flags & kHasFrames) != 0 ? 2 : 1);
}

} // namespace mpatool
