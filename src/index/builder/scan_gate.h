/// How a scan and whoever cancels it from another thread meet.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace trnmpa {

/// A cancel flag and an event that is signalled while no scan runs. Any thread may call any operation.
class ScanGate {
public:
    /// A new event, signalled.
    void Open();

    /// A scan begins: the event is not signalled any more, and no cancellation from before counts.
    void Enter();
    /// The scan has ended; those who wait go on.
    void Leave();

    /// Asks the scan to stop. Free of locks, so that the scan itself may look and ask at every frame.
    void RequestStop() { stop_.store(1, std::memory_order_relaxed); }
    bool StopRequested() const { return stop_.load(std::memory_order_relaxed) != 0; }

    /// Asks the scan to stop, waits for its end and closes the event. With a closed event it only asks: there
    /// is nothing to wait on.
    template <typename Announcement>
    void CancelAndClose(Announcement&& announce) {
        std::unique_lock lock(mutex_);
        RequestStop();
        announce();
        idle_.wait(lock, [this] { return signalled_ || closed_; });
        closed_ = true;
        idle_.notify_all();
    }

private:
    std::atomic<std::uint32_t> stop_ = 0;
    std::mutex mutex_;
    std::condition_variable idle_;
    bool signalled_ = true;
    bool closed_ = true;
};

} // namespace trnmpa
