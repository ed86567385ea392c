/// The count of an object that destroys itself with its last user.
#pragma once

#include <atomic>
#include <cstdint>

namespace trnmpa {

/// Starts at 0; any thread may call. Each operation gives the count that it leaves.
class ReferenceCount {
public:
    std::uint32_t Add() noexcept { return count_.fetch_add(1, std::memory_order_relaxed) + 1; }
    std::uint32_t Get() const noexcept { return count_.load(std::memory_order_acquire); }
    /// At 0 this was the last user, and all that the others did before is seen by the caller. Without a user
    /// to take off it wraps around, to 0xFFFFFFFF.
    std::uint32_t Remove() noexcept { return count_.fetch_sub(1, std::memory_order_acq_rel) - 1; }

private:
    std::atomic<std::uint32_t> count_ = 0;
};

} // namespace trnmpa
