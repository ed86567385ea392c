/// For the walks: how a call is made.
#pragma once

#include "faults/fault_layer.h"
#include "faults/module_walk.h"

#include <utility>

namespace test {

template <typename Operation>
std::int32_t ModuleWalk::Call(std::string name, StepKind kind, Operation&& operation) {
    Begin(std::move(name), kind);
    std::int32_t result = 0;
    bool threw = false;
    {
        const FaultLayer::Window window;
        try {
            result = operation();
        } catch (...) {
            threw = true;
        }
    }
    End(result, threw);
    return result;
}

} // namespace test
