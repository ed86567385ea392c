/// Leaks, so that a test can see whether anybody notices.
#include <memory>

int main() {
    // Not in a variable, which would keep it reachable to the end.
    static_cast<void>(std::make_unique<int[]>(1000).release());
    return 0;
}
