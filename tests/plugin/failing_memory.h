/// Memory of the program that fails on demand and is counted.
#pragma once

#include <cstddef>

namespace test {

/// Blocks that the program holds now from operator new.
std::size_t BlocksHeld();

/// As long as it lives, the allocation of one number, counted from 0, fails; one at a time.
class FailingAllocation {
public:
    explicit FailingAllocation(std::size_t number);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Whether there were so many.
    bool HasFailed() const;
};

} // namespace test
