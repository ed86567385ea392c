/// One table of settings files and what GetPrivateProfileIntW makes of them.
#pragma once

#include <string>
#include <vector>

namespace test {

inline constexpr int kProfileFallback = -777;

struct ProfileCase {
    const char* name;
    std::string content; ///< of the whole file
    int expected;        ///< for the key "Key" of the section "CODEC", with kProfileFallback
};

/// The expected values are what the real call gave when it was tried, under Wine 8. Where Windows itself or
/// its documentation is known to differ, a comment says so.
std::vector<ProfileCase> ProfileCases();

} // namespace test
