/// For tests of permissions, which root does not notice.
#pragma once

#include <cstdlib>
#include <unistd.h>

namespace test {

/// Gives root's rights up for as long as it lives; other users have none to give.
class WithoutRootRights {
public:
    WithoutRootRights() {
        constexpr uid_t kNobody = 65534;
        dropped_ = ::geteuid() == 0 && ::setresuid(kNobody, kNobody, 0) == 0;
    }
    ~WithoutRootRights() {
        if (dropped_ && ::setresuid(0, 0, 0) != 0)
            std::abort();
    }
    WithoutRootRights(const WithoutRootRights&) = delete;
    WithoutRootRights& operator=(const WithoutRootRights&) = delete;

private:
    bool dropped_ = false;
};

} // namespace test
