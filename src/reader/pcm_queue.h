#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace trnmpa {

/// Decoded PCM that waits to be delivered.
class PcmQueue {
public:
    void Clear() {
        bytes_.clear();
        taken_ = 0;
    }

    std::size_t Size() const { return bytes_.size() - taken_; }

    void Append(std::span<const std::uint8_t> pcm) {
        DropTaken();
        bytes_.insert(bytes_.end(), pcm.begin(), pcm.end());
    }

    /// Passes over `bytes`, at most all.
    void Drop(std::size_t bytes) { Take(bytes); }

    /// The first `bytes`, at most all; valid until the next Append or Clear.
    std::span<std::uint8_t> Take(std::size_t bytes) {
        const std::span<std::uint8_t> first = Waiting().first(bytes < Size() ? bytes : Size());
        taken_ += first.size();
        return first;
    }

    /// All that waits; valid as what Take gives.
    std::span<std::uint8_t> Waiting() { return std::span(bytes_).subspan(taken_); }

private:
    void DropTaken() {
        bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(taken_));
        taken_ = 0;
    }

    std::vector<std::uint8_t> bytes_;
    std::size_t taken_ = 0;
};

} // namespace trnmpa
