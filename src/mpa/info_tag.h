/// The texts by which encoders mark a first frame that describes the stream instead of holding audio.
#pragma once

#include <array>
#include <cstdint>

namespace trnmpa {

using TagText = std::array<std::uint8_t, 4>;

inline constexpr TagText kInfoText = {'I', 'n', 'f', 'o'};
inline constexpr TagText kXingText = {'X', 'i', 'n', 'g'};
inline constexpr TagText kVbriText = {'V', 'B', 'R', 'I'};

} // namespace trnmpa
