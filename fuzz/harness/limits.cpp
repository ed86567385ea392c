#include "harness/limits.h"

#include "reader/counted_memory.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace fuzz {

namespace {

constexpr double kSeconds = 1.0;
constexpr double kSecondsPerByte = 2e-6;
constexpr std::size_t kMemoryBytes = std::size_t{8} * 1024 * 1024;
constexpr std::size_t kMemoryBytesPerEntry = 16;

struct Record {
    const char* name = "none";
    double share = 0.0;
    double value = 0.0;
};
Record slowest;
Record largest;

void Keep(Record& record, const char* name, double value, double limit) {
    if (value / limit > record.share)
        record = {name, value / limit, value};
}

/// Of this process: what others do on the machine does not count where the system tells it apart.
double Now() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

} // namespace

double TimeLimit(const Work& work) {
    return TRN_FUZZ_TIME_FACTOR *
           (kSeconds + kSecondsPerByte * static_cast<double>(work.inputBytes + work.convertedBytes));
}

std::size_t MemoryLimit(const Work& work) {
    return kMemoryBytes + kMemoryBytesPerEntry * work.indexEntries + work.answerBytes;
}

Watch::Watch(const char* name, const Work& work)
    : name_(name), work_(work), heldBefore_(test::MemoryHeld()), startedAt_(Now()) {
    test::ForgetPeak();
}

Watch::~Watch() {
    const double seconds = Now() - startedAt_;
    const std::size_t peak = test::PeakMemory();
    const std::size_t bytes = peak > heldBefore_ ? peak - heldBefore_ : 0;
    Keep(slowest, name_, seconds, TimeLimit(work_));
    Keep(largest, name_, static_cast<double>(bytes), static_cast<double>(MemoryLimit(work_)));
    if (seconds <= TimeLimit(work_) && bytes <= MemoryLimit(work_))
        return;
    std::fprintf(stderr,
                 "%s goes beyond its limits: %.3f s of %.3f, %zu bytes of %zu (input %zu, entries %zu, "
                 "answer %zu)\n",
                 name_, seconds, TimeLimit(work_), bytes, MemoryLimit(work_), work_.inputBytes,
                 work_.indexEntries, work_.answerBytes);
    std::abort();
}

void PrintLimitsMet() {
    std::printf("nearest to its time limit: %s, %.4f s (%.1f %%)\n", slowest.name, slowest.value,
                100 * slowest.share);
    std::printf("nearest to its memory limit: %s, %.0f bytes (%.1f %%)\n", largest.name, largest.value,
                100 * largest.share);
    slowest = {};
    largest = {};
}

} // namespace fuzz
