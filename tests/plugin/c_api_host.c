/* What a host in C sees. */
#include "trnmpafileread/c_api.h"

/* Every record has one layout for all compilers. */
#define HAS_SIZE(record, size) typedef char record##_has_##size[sizeof(record) == (size) ? 1 : -1]
HAS_SIZE(trnmpa_info, 64);
HAS_SIZE(trnmpa_read_result, 24);
HAS_SIZE(trnmpa_slice_options, 24);
HAS_SIZE(trnmpa_slice, 32);
HAS_SIZE(trnmpa_index_progress, 24);

int MeetsVersion(uint32_t (*version)(void));
uint32_t NarrowToPlain(uint32_t (*useKernels)(uint32_t mask));

int MeetsVersion(uint32_t (*version)(void)) {
    return version() >= TRNMPA_API_VERSION;
}

uint32_t NarrowToPlain(uint32_t (*useKernels)(uint32_t mask)) {
    return useKernels(TRNMPA_KERNELS_PLAIN);
}
