/// The time and the memory that one operation of the module may take.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

namespace fuzz {

/// What an operation works on.
struct Work {
    std::size_t inputBytes = 0;   ///< of the media file and its index, or of what else is read
    std::size_t indexEntries = 0; ///< that the index really has
    std::size_t answerBytes = 0;  ///< of PCM that the caller asks for
    /// Of PCM that is brought to another rate for it, before and after.
    std::size_t convertedBytes = 0;
};

/// Processor seconds: 1, and 2 for each million bytes of input and of PCM that changes its rate. Slow builds
/// get a multiple, see TRN_FUZZ_TIME_FACTOR in CMakeLists.txt.
double TimeLimit(const Work& work);

/// Bytes taken at a time beyond what was held before: 8 MiB, 16 for each entry, and the answer.
std::size_t MemoryLimit(const Work& work);

/// Measures what runs between its making and its end, and ends the program, with `name`, when that goes
/// beyond a limit.
class Watch {
public:
    Watch(const char* name, const Work& work);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

private:
    const char* name_;
    Work work_;
    std::size_t heldBefore_;
    double startedAt_;
};

/// Runs an operation under a watch and gives its result.
template <typename Operation>
auto Watched(const char* name, const Work& work, Operation&& operation) {
    const Watch watch(name, work);
    return std::forward<Operation>(operation)();
}

/// Prints the largest share of its limits that an operation came to, and begins afresh.
void PrintLimitsMet();

} // namespace fuzz
