/// The plain C functions of the built module.

#include "trnmpafileread/c_api.h"

#include "os/processor.h"
#include "support/loaded_module.h"
#include "support/test_files.h"

#include <gtest/gtest.h>

#include <optional>

// In C.
extern "C" int MeetsVersion(std::uint32_t (*version)());
extern "C" std::uint32_t NarrowToPlain(std::uint32_t (*useKernels)(std::uint32_t mask));

namespace {

constexpr std::uint32_t kNamedKernels = TRNMPA_KERNELS_PLAIN | TRNMPA_KERNELS_SSE2 | TRNMPA_KERNELS_AVX2;

class CApi : public testing::Test {
    test::LoadedModule module_;

protected:
    ~CApi() override { use_(TRNMPA_KERNELS_ALL); }

    template <typename Function>
    Function* Named(const char* name) {
        Function* const function = module_.Library().FunctionNamed<Function*>(name);
        EXPECT_NE(function, nullptr) << name;
        return function;
    }

    decltype(trnmpa_api_version)* const version_ = Named<decltype(trnmpa_api_version)>("trnmpa_api_version");
    decltype(trnmpa_kernels_available)* const available_ =
        Named<decltype(trnmpa_kernels_available)>("trnmpa_kernels_available");
    decltype(trnmpa_use_kernels)* const use_ = Named<decltype(trnmpa_use_kernels)>("trnmpa_use_kernels");

    std::optional<test::Pcm> Music(const char* name) {
        const auto reader = module_.OpenForReading(test::SourceFolder() / "samples" / name);
        return reader != nullptr ? test::ReadPcm(*reader, 0, 40000) : std::nullopt;
    }
};

TEST_F(CApi, VersionIsThatOfTheHeader) {
    EXPECT_EQ(version_(), TRNMPA_API_VERSION);
    EXPECT_EQ(MeetsVersion(version_), 1);
}

TEST_F(CApi, AvailableKernelsAreThoseOfTheProcessor) {
    const std::uint32_t available = available_();
    EXPECT_NE(available & TRNMPA_KERNELS_PLAIN, 0u);
    EXPECT_EQ(available & ~kNamedKernels, 0u);
    if (!os::ProcessorHasAvx2()) {
        EXPECT_EQ(available & TRNMPA_KERNELS_AVX2, 0u);
    }
}

TEST_F(CApi, UseOfKernelsIsNarrowedAndWidenedAgain) {
    const std::uint32_t available = available_();
    EXPECT_EQ(NarrowToPlain(use_), TRNMPA_KERNELS_PLAIN);
    EXPECT_EQ(available_(), available) << "what is there stays";
    for (const std::uint32_t mask : {TRNMPA_KERNELS_SSE2, TRNMPA_KERNELS_AVX2, 0u})
        EXPECT_EQ(use_(mask), (available & mask) | TRNMPA_KERNELS_PLAIN);
    EXPECT_EQ(use_(~kNamedKernels), TRNMPA_KERNELS_PLAIN) << "sets that nobody knows";
    EXPECT_EQ(use_(TRNMPA_KERNELS_ALL), available);
}

TEST_F(CApi, KernelsAreSetForTheReadersOfThisModule) {
    for (const char* name : {"music.mp3", "music.mp2"}) {
        use_(TRNMPA_KERNELS_PLAIN);
        const auto plain = Music(name);
        ASSERT_TRUE(plain) << name;
        for (const std::uint32_t mask : {TRNMPA_KERNELS_SSE2, TRNMPA_KERNELS_AVX2, TRNMPA_KERNELS_ALL}) {
            use_(mask);
            EXPECT_EQ(Music(name), plain) << name << ' ' << mask;
        }
    }
}

} // namespace
