/// The wall between the module and its host: every exported operation that may throw runs behind it.
/// (The C functions tell lack of memory apart within.)
#pragma once

#include <cstdint>
#include <type_traits>

namespace trnmpa {

/// Runs an operation of an exported interface; an exception of any kind, failed allocation included, becomes
/// `thrown`.
template <typename Operation>
std::invoke_result_t<Operation> Guarded(Operation&& operation,
                                        std::invoke_result_t<Operation> thrown = {}) noexcept {
    try {
        return operation();
    } catch (...) {
        return thrown;
    }
}

/// What an exported object answers for its engine where that cannot.
struct EngineFailures {
    std::int32_t missing = 0;
    std::int32_t thrown = 0;
};

/// Runs an operation of an exported object's engine, which may be null.
template <typename Engine, typename Operation>
std::int32_t WithEngine(Engine* engine, Operation&& operation, EngineFailures failures = {}) noexcept {
    if (engine == nullptr)
        return failures.missing;
    return Guarded([&]() -> std::int32_t { return operation(*engine); }, failures.thrown);
}

/// 1 for a positive result, else 0.
constexpr std::int32_t TruthOf(std::int32_t result) {
    return result > 0 ? 1 : 0;
}

} // namespace trnmpa
