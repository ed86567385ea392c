#include "mpatool/selftest/verdicts.h"

#include "mpatool/output/text_output.h"

namespace mpatool {

void Verdicts::Check(const std::string& name, bool good, const std::string& detail) {
    ++checks_;
    if (good) {
        Print(std::string(kGoodStart) + name + "\n");
        return;
    }
    ++failures_;
    Print(std::string(kBadStart) + name + (detail.empty() ? "" : ": " + detail) + "\n");
}

void Verdicts::CheckResult(const std::string& name, std::int64_t wanted, std::int64_t found) {
    Check(name, wanted == found, std::to_string(found) + " instead of " + std::to_string(wanted));
}

} // namespace mpatool
