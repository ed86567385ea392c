#include "mpatool/decode/kernel_choice.h"

#include "mpatool/module/module_host.h"
#include "mpatool/output/tool_error.h"
#include "trnmpafileread/c_api.h"

#include <algorithm>
#include <array>

namespace mpatool {

namespace {

struct NamedKernels {
    const char* name;
    std::uint32_t mask;
};

constexpr std::array<NamedKernels, 4> kKernels = {{
    {"plain", TRNMPA_KERNELS_PLAIN},
    {"sse2", TRNMPA_KERNELS_SSE2},
    {"avx2", TRNMPA_KERNELS_AVX2},
    {"all", TRNMPA_KERNELS_ALL},
}};

} // namespace

std::vector<std::string> KernelNames() {
    std::vector<std::string> names;
    names.reserve(kKernels.size());
    for (const NamedKernels& kernels : kKernels)
        names.emplace_back(kernels.name);
    return names;
}

std::uint32_t KernelsByName(const std::string& name) {
    const auto found = std::ranges::find(kKernels, name, &NamedKernels::name);
    return found != kKernels.end() ? found->mask : TRNMPA_KERNELS_ALL;
}

void UseKernels(ModuleHost& host, const std::wstring& module, std::uint32_t kernels) {
    const auto use = reinterpret_cast<decltype(&trnmpa_use_kernels)>(host.Export("trnmpa_use_kernels"));
    if (use == nullptr)
        throw ToolError(module, "the module does not let its kernels be chosen");
    const std::uint32_t inUse = use(kernels);
    if (kernels != TRNMPA_KERNELS_ALL && (inUse & kernels) == 0)
        throw ToolError(module, "the module or this processor has no such kernels as --kernels asks for");
}

} // namespace mpatool
