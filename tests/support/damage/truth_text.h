/// What a damaged file consists of, for people.
#pragma once

#include "support/damage/damaged_file.h"

#include <string>

namespace test {

/// One line a piece: offset, length, what it is. Whole frames in a row share a line.
std::string TruthText(const DamagedFile& file);

} // namespace test
