/// Headers, frame lengths and CRC words (ISO/IEC 11172-3 clauses 2.4.1.3, 2.4.1.4, 2.4.3.1).
#pragma once

#include "support/bitstream/bit_writer.h"
#include "support/bitstream/options.h"
#include "support/bitstream/random.h"
#include "support/model/header.h"

#include <array>
#include <cstdint>
#include <span>

namespace test::bitstream {

using HeaderBytes = model::HeaderBytes;

/// Draws one header after the other.
class HeaderMaker {
public:
    explicit HeaderMaker(const StreamOptions& options);

    model::Header Next(Random& random);

private:
    bool Pad(const model::Header& header, int remainder, Random& random);

    const StreamOptions& options_;
    int owed_ = 0; ///< fractions of a byte that frames without padding fell short by, in 1 / sample rate
};

HeaderBytes WriteHeader(const model::Header& header, const StreamOptions& options, Random& random);

/// CRC-16 over the last 16 bits of the header and the first `protectedBits` bits behind the CRC word.
std::uint16_t Crc(const HeaderBytes& header, std::span<const std::uint8_t> bytes, std::size_t protectedBits);

} // namespace test::bitstream
