#include "index/builder/scan_gate.h"

namespace trnmpa {

void ScanGate::Open() {
    const std::lock_guard lock(mutex_);
    signalled_ = true;
    closed_ = false;
}

void ScanGate::Enter() {
    const std::lock_guard lock(mutex_);
    signalled_ = false;
    stop_.store(0, std::memory_order_relaxed);
}

void ScanGate::Leave() {
    const std::lock_guard lock(mutex_);
    signalled_ = true;
    idle_.notify_all();
}

} // namespace trnmpa
