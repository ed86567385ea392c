/// The wall between the module and its host.
#pragma once

#include <cstdint>
#include <type_traits>

namespace trnmpa {

/// Runs an operation of an exported interface; an exception, failed allocation included, becomes 0.
template <typename Operation>
std::invoke_result_t<Operation> Guarded(Operation&& operation) noexcept {
    try {
        return operation();
    } catch (...) {
        return {};
    }
}

/// 1 for a positive result, else 0.
constexpr std::int32_t TruthOf(std::int32_t result) {
    return result > 0 ? 1 : 0;
}

} // namespace trnmpa
