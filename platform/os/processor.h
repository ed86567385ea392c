#pragma once

namespace os {

/// Whether the processor has the AVX2 instructions and the operating system keeps their registers.
bool ProcessorHasAvx2();

} // namespace os
