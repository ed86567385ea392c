/// Virtual operations by the number of their slot, as a caller compiled separately finds them. The numbers
/// are those of the Itanium C++ ABI (GCC, Clang, mingw-w64), where a virtual destructor takes two slots.
#pragma once

#include <cstddef>
#include <cstring>

namespace test {

/// The function in a slot of an object's virtual table; its first argument is the object.
template <typename Function>
Function Slot(void* object, std::size_t number) {
    void* const* table = nullptr;
    std::memcpy(&table, object, sizeof table);
    return reinterpret_cast<Function>(table[number]);
}

} // namespace test
