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
/// A PCM format, 18 bytes. On Windows the system's own record of this name.
struct WAVEFORMATEX {
    std::uint16_t wFormatTag;      ///< 1: PCM
    std::uint16_t nChannels;       ///< 1 or 2
    std::uint32_t nSamplesPerSec;  ///< Hz
    std::uint32_t nAvgBytesPerSec; ///< nSamplesPerSec times nBlockAlign
    std::uint16_t nBlockAlign;     ///< bytes of one sample of all channels
    std::uint16_t wBitsPerSample;  ///< bits of one sample of one channel
    std::uint16_t cbSize;          ///< 0: nothing follows
};
#pragma pack(pop)

#endif

static_assert(sizeof(WAVEFORMATEX) == 18);
