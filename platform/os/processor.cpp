#include "os/processor.h"

#if defined(_MSC_VER) && defined(_M_X64)
#include <immintrin.h>
#include <intrin.h>
#endif

namespace os {

#if defined(_MSC_VER) && defined(_M_X64)

bool ProcessorHasAvx2() {
    constexpr int kSavesRegisters = 1 << 27;           // leaf 1, ecx: OSXSAVE
    constexpr int kAvx = 1 << 28;                      // leaf 1, ecx
    constexpr int kAvx2 = 1 << 5;                      // leaf 7, ebx
    constexpr unsigned long long kVectorRegisters = 6; // XCR0: xmm and ymm
    int leaf[4] = {};
    __cpuid(leaf, 0);
    if (leaf[0] < 7)
        return false;
    __cpuid(leaf, 1);
    if ((leaf[2] & kSavesRegisters) == 0 || (leaf[2] & kAvx) == 0)
        return false;
    if ((_xgetbv(0) & kVectorRegisters) != kVectorRegisters)
        return false;
    __cpuidex(leaf, 7, 0);
    return (leaf[1] & kAvx2) != 0;
}

#elif defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))

bool ProcessorHasAvx2() {
    // Looks at what the operating system saves, too.
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
}

#else

bool ProcessorHasAvx2() {
    return false;
}

#endif

} // namespace os
