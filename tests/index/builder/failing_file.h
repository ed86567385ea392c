/// A disk that fails when told, in the place of the library's files to write.
#pragma once

#include "support/test_files.h"
#include "trcommontoolsr/file_ex.h"

#include <optional>
#include <string>
#include <vector>

namespace test {

enum class Fault {
    kRefuses, ///< gives 0 and does nothing
    kShort,   ///< a write puts half of its bytes down and gives their number; anything else refuses
    kThrows,
};

/// What all objects of TRCT_FileEx in this program do; one file at a time.
struct FailingDisk {
    Bytes content;           ///< of the file
    bool isOpen = false;     ///< a file was created and not closed since
    bool exists = false;     ///< a file was ever created
    std::vector<char> calls; ///< what was asked so far: 'c'reate, 's'eek, set 'p'osition, 'w'rite, close 'x'
    std::optional<std::size_t> faultAt; ///< the number of the call that goes wrong
    bool lasts = false;                 ///< and all behind it (they refuse)
    Fault fault = Fault::kRefuses;

    TRCT_FILE_EX_SETTINGS settings;
    std::vector<std::int64_t> createArguments; ///< of the last call, the path left out
    std::wstring path;
};

FailingDisk& Disk();

} // namespace test
