/// A limit for tests that would hang where others fail.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

namespace test {

/// Ends the program, loudly, when it lives longer than its limit.
class Watchdog {
public:
    explicit Watchdog(std::chrono::seconds limit) : thread_([this, limit] { Watch(limit); }) {}
    ~Watchdog() {
        {
            const std::lock_guard lock(mutex_);
            over_ = true;
        }
        ended_.notify_all();
        thread_.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

private:
    void Watch(std::chrono::seconds limit) {
        std::unique_lock lock(mutex_);
        if (ended_.wait_for(lock, limit, [this] { return over_; }))
            return;
        std::fputs("Watchdog: the test hangs\n", stderr);
        std::abort();
    }

    std::mutex mutex_;
    std::condition_variable ended_;
    bool over_ = false;
    std::thread thread_;
};

} // namespace test
