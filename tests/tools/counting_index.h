/// The index builder of the counting module.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>

namespace test {

/// Writes an index of made-up frames, slowly if so wished. Progress may be asked for and Cancel called on any
/// thread; as in the real module, a cancellation before the build is lost.
class CountingIndex {
public:
    struct Plan {
        std::int64_t entries = 0;
        std::chrono::milliseconds entryDelay{0};
        std::uint32_t endState = 1;
        bool crashes = false; ///< ends the whole process in the middle
    };

    CountingIndex(std::filesystem::path index, const Plan& plan) : index_(std::move(index)), plan_(plan) {}

    /// Runs to the end on this thread.
    void Build();
    void Cancel();

    std::uint32_t Frames() const { return frames_; }
    std::uint32_t State() const { return state_; }

private:
    const std::filesystem::path index_;
    const Plan plan_;
    std::atomic<bool> cancelled_ = false;
    std::atomic<bool> building_ = false;
    std::atomic<std::uint32_t> frames_ = 0;
    std::atomic<std::uint32_t> state_ = 0;
};

} // namespace test
