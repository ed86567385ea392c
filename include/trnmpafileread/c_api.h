/// The module for hosts in C and in languages that call C: plain functions and plain types, the same for
/// every compiler. C99 and C++.
///
/// Nothing is thrown across these functions. A host finds them by name in the loaded module, or links against
/// it.
#pragma once

#include "trnmpafileread/export.h"

#include <stdint.h>

#ifdef __cplusplus
#define TRNMPA_NOEXCEPT noexcept
extern "C" {
#else
#define TRNMPA_NOEXCEPT
#endif

/// The version of this header. It grows when functions are added; none changes its meaning or goes.
#define TRNMPA_API_VERSION 1u

/// Sets of the built-in decoder's inner loops, as bits of a mask. All give the same PCM, bit for bit.
#define TRNMPA_KERNELS_PLAIN 1u ///< portable code, always there
#define TRNMPA_KERNELS_SSE2 2u  ///< x86-64 processors
#define TRNMPA_KERNELS_AVX2 4u  ///< x86-64 processors with AVX2
#define TRNMPA_KERNELS_ALL 0xFFFFFFFFu

/// TRNMPA_API_VERSION of the header that the module was built with.
TRN_EXPORT uint32_t trnmpa_api_version(void) TRNMPA_NOEXCEPT;

/// The sets that this build has and that processor and operating system can run; TRNMPA_KERNELS_PLAIN always.
TRN_EXPORT uint32_t trnmpa_kernels_available(void) TRNMPA_NOEXCEPT;

/// Narrows the choice to the sets in `mask`, for the whole process; of these the fastest available one is
/// used for each loop. TRNMPA_KERNELS_PLAIN stays in whatever the mask says; TRNMPA_KERNELS_ALL undoes an
/// earlier call. Gives the sets that are now in use. To be called before readers are made, for measurements
/// and tests: without a call all available sets are in use.
TRN_EXPORT uint32_t trnmpa_use_kernels(uint32_t mask) TRNMPA_NOEXCEPT;

#ifdef __cplusplus
}
#endif
