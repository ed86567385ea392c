#include "faults/module_walk.h"

#include "faults/module_walk_call.h"
#include "support/digest.h"

#include <utility>

namespace test {

std::string Step::Text() const {
    return name + " gave " + std::to_string(result) + ", " + std::to_string(data.size()) + " bytes " +
           Digest(data) + (threw ? ", threw" : "") + (metFault ? ", met the fault" : "");
}

std::vector<Step> ModuleWalk::Run() {
    steps_.clear();
    Walk();
    return std::exchange(steps_, {});
}

void ModuleWalk::Begin(std::string name, StepKind kind) {
    steps_.push_back({.name = std::move(name), .kind = kind});
    steps_.back().metFault = FaultLayer::Happened();
}

void ModuleWalk::End(std::int32_t result, bool threw) {
    Step& step = steps_.back();
    step.metFault = FaultLayer::Happened() && !step.metFault;
    step.result = result;
    step.threw = threw;
}

void ModuleWalk::Data(const void* bytes, std::size_t size) {
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    if (first != nullptr)
        steps_.back().data.insert(steps_.back().data.end(), first, first + size);
}

void ModuleWalk::Text(std::wstring_view text) {
    Data(text.data(), text.size() * sizeof(wchar_t));
}

} // namespace test
