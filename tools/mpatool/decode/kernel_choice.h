/// The decoder's kernels by name, and having the module use them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace mpatool {

class ModuleHost;

/// What --kernels takes: "plain", "sse2", "avx2", "all".
std::vector<std::string> KernelNames();

/// The mask (TRNMPA_KERNELS_*) of one of them.
std::uint32_t KernelsByName(const std::string& name);

/// Has the module use these kernels and the plain ones, but no others, in readers made from now on. Throws
/// ToolError with the module's name when it does not let its kernels be chosen or cannot use these here.
void UseKernels(ModuleHost& host, const std::wstring& module, std::uint32_t kernels);

} // namespace mpatool
