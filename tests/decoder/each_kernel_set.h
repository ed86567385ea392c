/// Tests that run once for each set of kernels.
#pragma once

#include "decoder/kernels/kernel_table.h"

#include <gtest/gtest.h>

#include <string>

namespace test {

/// Has the decoder use a set of kernels for the life of the object.
class KernelMask {
public:
    explicit KernelMask(unsigned mask) { trnmpa::SetKernelMask(mask); }
    ~KernelMask() { trnmpa::SetKernelMask(trnmpa::kAllKernels); }
    KernelMask(const KernelMask&) = delete;
    KernelMask& operator=(const KernelMask&) = delete;
};

/// Parameter: the set. Skipped, by name, where the processor lacks it.
class EachKernelSet : public testing::TestWithParam<unsigned> {
protected:
    void SetUp() override {
        if ((GetParam() & ~trnmpa::AvailableKernels()) != 0)
            GTEST_SKIP() << "this build or processor has no such kernels";
    }

    const trnmpa::KernelTable& Kernels() const { return trnmpa::Kernels(); }

private:
    KernelMask mask_{GetParam()};
};

inline std::string KernelSetName(const testing::TestParamInfo<unsigned>& set) {
    switch (set.param) {
    case trnmpa::kPlainKernels:
        return "Plain";
    case trnmpa::kSse2Kernels:
        return "Sse2";
    default:
        return "Avx2";
    }
}

inline constexpr unsigned kEachKernelSet[] = {trnmpa::kPlainKernels, trnmpa::kSse2Kernels,
                                              trnmpa::kAvx2Kernels};
/// Those that are compared with the plain one.
inline constexpr unsigned kEachFastKernelSet[] = {trnmpa::kSse2Kernels, trnmpa::kAvx2Kernels};

} // namespace test
