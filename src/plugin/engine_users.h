/// Engines that copies of an exported object share.
#pragma once

#include <atomic>
#include <cstdint>
#include <type_traits>

namespace trnmpa {

/// Base of such an engine: counts the objects that hold it. The objects themselves hold a plain pointer,
/// which is part of their layout.
class SharedEngine {
public:
    void AddUser() { users_.fetch_add(1, std::memory_order_relaxed); }
    /// True when that was the last one.
    bool RemoveUser() { return users_.fetch_sub(1, std::memory_order_acq_rel) == 1; }

protected:
    ~SharedEngine() = default;

private:
    std::atomic<std::uint32_t> users_ = 1;
};

/// One more user of `engine`, which may be null.
template <typename Engine>
Engine* ShareEngine(Engine* engine) {
    if (engine != nullptr)
        engine->AddUser();
    return engine;
}

/// Puts `replacement` into `place`; the engine that was there goes with its last user.
template <typename Engine>
void ReplaceEngine(Engine*& place, std::type_identity_t<Engine>* replacement) {
    Engine* former = place;
    place = replacement;
    if (former != nullptr && former->RemoveUser())
        delete former;
}

} // namespace trnmpa
