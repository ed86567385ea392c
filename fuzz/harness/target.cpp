#include "harness/target.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace fuzz {

void Require(bool holds, const char* text) {
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", text);
    std::abort();
}

void Touch(View bytes) {
    static std::atomic<std::uint8_t> sink = 0;
    std::uint8_t sum = 0;
    for (const std::uint8_t byte : bytes)
        sum = static_cast<std::uint8_t>(sum + byte);
    sink = sum;
}

Bytes Repeated(View pattern, std::size_t bytes) {
    Bytes repeated(bytes);
    for (std::size_t i = 0; i < bytes; ++i)
        repeated[i] = pattern[i % pattern.size()];
    return repeated;
}

} // namespace fuzz
