#include "decoder/kernels/kernel_table.h"

#include "decoder/kernels/kernel_sets.h"
#include "os/processor.h"

#include <atomic>

namespace trnmpa {

namespace {

constexpr KernelTable kPlain = {plain::TransformSlots, plain::WindowSlots, plain::UndoMidSide,
                                plain::ReduceAliases,  plain::InverseMdct, plain::ScaleSamples,
                                plain::DoubleSamples};

#if TRN_X86_KERNELS
// Compilers make SSE2 code of the plain scaling that is not to be beaten by hand.
constexpr KernelTable kSse2 = {sse2::TransformSlots, sse2::WindowSlots, sse2::UndoMidSide,
                               sse2::ReduceAliases,  sse2::InverseMdct, plain::ScaleSamples,
                               sse2::DoubleSamples};
constexpr KernelTable kAvx2 = {avx2::TransformSlots, avx2::WindowSlots, avx2::UndoMidSide,
                               avx2::ReduceAliases,  avx2::InverseMdct, avx2::ScaleSamples,
                               avx2::DoubleSamples};
#endif

const KernelTable& Choose([[maybe_unused]] unsigned sets) {
#if TRN_X86_KERNELS
    if ((sets & kAvx2Kernels) != 0)
        return kAvx2;
    if ((sets & kSse2Kernels) != 0)
        return kSse2;
#endif
    return kPlain;
}

std::atomic<const KernelTable*>& Chosen() {
    static std::atomic<const KernelTable*> chosen = &Choose(AvailableKernels());
    return chosen;
}

} // namespace

const KernelTable& Kernels() {
    return *Chosen().load(std::memory_order_relaxed);
}

const KernelTable& PlainKernels() {
    return kPlain;
}

unsigned SetKernelMask(unsigned mask) {
    const unsigned sets = AvailableKernels() & (mask | kPlainKernels);
    Chosen().store(&Choose(sets), std::memory_order_relaxed);
    return sets;
}

unsigned AvailableKernels() {
#if TRN_X86_KERNELS
    // Every 64-bit x86 processor has SSE2.
    return kPlainKernels | kSse2Kernels | (os::ProcessorHasAvx2() ? unsigned{kAvx2Kernels} : 0u);
#else
    return kPlainKernels;
#endif
}

} // namespace trnmpa
