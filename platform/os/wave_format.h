/// WAVEFORMATEX, the packed PCM format record that crosses the module boundary.
#pragma once

#if defined(_WIN32)

#if defined(_MSC_VER)
#include <windows.h>
#else
// What mmreg.h needs of windows.h, without the macros of the rest.
#include <windef.h>

#include <wingdi.h>
#endif

#include <mmreg.h>

#else

#include <cstdint>

#pragma pack(push, 1)
struct WAVEFORMATEX {
    std::uint16_t wFormatTag;
    std::uint16_t nChannels;
    std::uint32_t nSamplesPerSec;
    std::uint32_t nAvgBytesPerSec;
    std::uint16_t nBlockAlign;
    std::uint16_t wBitsPerSample;
    std::uint16_t cbSize;
};
#pragma pack(pop)

#endif

static_assert(sizeof(WAVEFORMATEX) == 18);
