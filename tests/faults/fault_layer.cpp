#include "faults/fault_layer.h"

namespace test {

namespace {

struct State {
    std::optional<Fault> fault;
    std::array<std::size_t, kSystemCalls> counts = {};
    bool isOpen = false;
    bool happened = false;
};

/// Plain data: it must be there before anything allocates.
constinit State state;

std::size_t& CountOf(SystemCall call) {
    return state.counts[static_cast<std::size_t>(call)];
}

} // namespace

std::string_view NameOf(SystemCall call) {
    constexpr std::array<std::string_view, kSystemCalls> kNames = {"open",  "ask",   "seek",    "read",
                                                                   "write", "close", "allocate"};
    return kNames[static_cast<std::size_t>(call)];
}

FaultLayer::FaultLayer(std::optional<Fault> fault) {
    state = {};
    state.fault = fault;
}

FaultLayer::~FaultLayer() {
    state = {};
}

FaultLayer::Window::Window() {
    state.isOpen = true;
}

FaultLayer::Window::~Window() {
    state.isOpen = false;
}

std::size_t FaultLayer::Count(SystemCall call) {
    return CountOf(call);
}

bool FaultLayer::Happened() {
    return state.happened;
}

bool TakeCall(SystemCall call) noexcept {
    if (!state.isOpen)
        return false;
    const std::size_t number = CountOf(call)++;
    if (!state.fault || state.fault->call != call || number < state.fault->number ||
        (number > state.fault->number && state.fault->length == FaultLength::kOnce))
        return false;
    state.happened = true;
    return true;
}

} // namespace test
