/// Index files changed at random.
#pragma once

#include "support/test_files.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace test {

struct Mutation {
    Bytes index;
    std::string description; ///< what was done
};

/// One to three changes of a whole index, drawn from the seed: flipped bits, bytes and fields set to values
/// that matter, entries swapped or copied, the end cut off or more put behind it.
Mutation Mutate(const Bytes& index, std::uint32_t mediaBytes, std::uint64_t seed);

/// How far an index can still be relied on.
struct Soundness {
    bool header = false;     ///< all that a reader uses of it is as it was
    std::size_t entries = 0; ///< before the first one that was changed or is missing
};
Soundness Compare(const Bytes& whole, const Bytes& mutated);

} // namespace test
