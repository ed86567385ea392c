/* What a host in C sees. */
#include "trnmpafileread/c_api.h"

int MeetsVersion(uint32_t (*version)(void));
uint32_t NarrowToPlain(uint32_t (*useKernels)(uint32_t mask));

int MeetsVersion(uint32_t (*version)(void)) {
    return version() >= TRNMPA_API_VERSION;
}

uint32_t NarrowToPlain(uint32_t (*useKernels)(uint32_t mask)) {
    return useKernels(TRNMPA_KERNELS_PLAIN);
}
