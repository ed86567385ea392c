/// The wall between the plain C functions and their callers.
#pragma once

#include "trnmpafileread/c_api.h"

#include <new>
#include <string>

namespace trnmpa {

/// Runs an operation that gives a trnmpa_result; what it throws becomes one.
template <typename Operation>
trnmpa_result Answer(Operation&& operation) noexcept {
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return TRNMPA_ERROR_MEMORY;
    } catch (...) {
        return TRNMPA_ERROR_UNEXPECTED;
    }
}

/// What keeps the engines from opening `path`, of which they tell only that they did not.
trnmpa_result WhyNotOpened(const std::wstring& path);

} // namespace trnmpa
