/// What a dynamic library's file says about itself: 64-bit little-endian ELF and PE files.
#pragma once

#include "support/test_files.h"

#include <set>
#include <string>

namespace test {

struct LibraryDescription {
    std::set<std::string> exports;  ///< names that other programs can bind to
    std::size_t unnamedExports = 0; ///< by number only; PE
    std::set<std::string> imports;  ///< names that it wants from others; ELF
    std::string name;               ///< by which it asks to be known (SONAME, name in the export directory)
};

/// Throws std::runtime_error or std::out_of_range for other files.
LibraryDescription DescribeLibrary(const Bytes& file);

} // namespace test
