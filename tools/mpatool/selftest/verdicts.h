/// What a selftest found, a line for each check.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace mpatool {

/// What the lines begin with.
inline constexpr std::string_view kGoodStart = "good  ";
inline constexpr std::string_view kBadStart = "BAD   ";

/// Prints verdicts as they come: should the module bring the program down, what was found before stands.
class Verdicts {
public:
    /// "good  NAME" or "BAD   NAME: DETAIL".
    void Check(const std::string& name, bool good, const std::string& detail = "");

    /// Checks a result that the contract fixes.
    void CheckResult(const std::string& name, std::int64_t wanted, std::int64_t found);

    int Checks() const { return checks_; }
    int Failures() const { return failures_; }

private:
    int checks_ = 0;
    int failures_ = 0;
};

} // namespace mpatool
