/// What every fuzzing target is made of.
#pragma once

#include "harness/input.h"

#include <cstddef>
#include <cstdint>
#include <memory>

/// One input. Gives 0; ends the program when the module does what it must not.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

/// Ends the program, with the text, unless `holds`.
void Require(bool holds, const char* text);

/// A copy of bytes in a block of just their size, so that the address sanitizer sees whoever reads over it.
class ExactBlock {
public:
    explicit ExactBlock(View bytes) : bytes_(new std::uint8_t[bytes.size()]), size_(bytes.size()) {
        std::copy(bytes.begin(), bytes.end(), bytes_.get());
    }

    View Bytes() const { return {bytes_.get(), size_}; }

private:
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::size_t size_;
};

/// `bytes` of a pattern, over and over.
Bytes Repeated(View pattern, std::size_t bytes);

/// Reads every byte, so that the sanitizers see one that is not there.
void Touch(View bytes);

} // namespace fuzz
