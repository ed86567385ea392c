#include "trnmpafileread/c_api.h"

#include "decoder/kernels/kernel_table.h"
#include "plugin/boundary.h"

static_assert(TRNMPA_KERNELS_PLAIN == trnmpa::kPlainKernels && TRNMPA_KERNELS_SSE2 == trnmpa::kSse2Kernels &&
              TRNMPA_KERNELS_AVX2 == trnmpa::kAvx2Kernels && TRNMPA_KERNELS_ALL == trnmpa::kAllKernels);

uint32_t trnmpa_api_version(void) noexcept {
    return TRNMPA_API_VERSION;
}

uint32_t trnmpa_kernels_available(void) noexcept {
    return trnmpa::Guarded([] { return trnmpa::AvailableKernels(); });
}

uint32_t trnmpa_use_kernels(uint32_t mask) noexcept {
    return trnmpa::Guarded([mask] { return trnmpa::SetKernelMask(mask); });
}
