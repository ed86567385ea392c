/// How much memory the program holds that it got from operator new.
#pragma once

#include <cstddef>

namespace test {

/// Bytes held now.
std::size_t MemoryHeld();

/// The most that was held at a time since the last ForgetPeak.
std::size_t PeakMemory();
void ForgetPeak();

} // namespace test
