/// Makes operator new[] of the program fail.
#pragma once

#include <cstddef>

namespace test {

/// As long as it lives, arrays of more bytes are refused with std::bad_alloc; one at a time.
class ArrayMemoryLimit {
public:
    explicit ArrayMemoryLimit(std::size_t bytes);
    ~ArrayMemoryLimit();
    ArrayMemoryLimit(const ArrayMemoryLimit&) = delete;
    ArrayMemoryLimit& operator=(const ArrayMemoryLimit&) = delete;
};

} // namespace test
