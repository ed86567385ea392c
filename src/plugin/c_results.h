/// What the plain C functions answer where something is thrown.
#pragma once

#include "plugin/boundary.h"
#include "trnmpafileread/c_api.h"

#include <new>
#include <string>

namespace trnmpa {

/// Runs an operation that gives a trnmpa_result behind the wall; want of memory has an answer of its own.
template <typename Operation>
trnmpa_result Answer(Operation&& operation) noexcept {
    return Guarded(
        [&]() -> trnmpa_result {
            try {
                return operation();
            } catch (const std::bad_alloc&) {
                return TRNMPA_ERROR_MEMORY;
            }
        },
        TRNMPA_ERROR_UNEXPECTED);
}

/// What keeps the engines from opening `path`, of which they tell only that they did not.
trnmpa_result WhyNotOpened(const std::wstring& path);

} // namespace trnmpa
