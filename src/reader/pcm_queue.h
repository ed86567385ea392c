#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace trnmpa {

/// Decoded PCM that waits to be delivered, and the last of what was.
class PcmQueue {
public:
    /// `remembered`: bytes that can be looked at again after they were taken.
    explicit PcmQueue(std::size_t remembered) : remembered_(remembered) {}

    void Clear() {
        bytes_.clear();
        taken_ = 0;
    }

    std::size_t Size() const { return bytes_.size() - taken_; }

    void Append(std::span<const std::uint8_t> pcm) {
        // Not at every call: what waits and what is remembered is moved.
        if (taken_ >= 2 * remembered_)
            Forget(taken_ - remembered_);
        bytes_.insert(bytes_.end(), pcm.begin(), pcm.end());
    }

    /// Passes over `bytes`, at most all.
    void Drop(std::size_t bytes) { Take(bytes); }

    /// The first `bytes`, at most all; valid until the next Append or Clear.
    std::span<std::uint8_t> Take(std::size_t bytes) {
        const std::span<std::uint8_t> first = Waiting().first(std::min(bytes, Size()));
        taken_ += first.size();
        return first;
    }

    /// All that waits; valid as what Take gives.
    std::span<std::uint8_t> Waiting() { return std::span(bytes_).subspan(taken_); }

    /// The last `bytes` that were taken or passed over, fewer when there were not so many since the last
    /// Clear; valid as what Take gives.
    std::span<const std::uint8_t> Taken(std::size_t bytes) const {
        return std::span(bytes_).first(taken_).last(std::min(bytes, taken_));
    }

private:
    void Forget(std::size_t bytes) {
        bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(bytes));
        taken_ -= bytes;
    }

    std::size_t remembered_;
    std::vector<std::uint8_t> bytes_;
    std::size_t taken_ = 0;
};

} // namespace trnmpa
