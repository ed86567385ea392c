/// Whether an engine brings exactly the samples of a stream, whatever was read before.
#pragma once

#include "reader/engine.h"
#include "reader/expected_stream.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace test {

testing::AssertionResult Answers(Engine& engine, const ExpectedStream& stream, std::int64_t start,
                                 std::uint32_t count);

/// One read from the first sample to the last, `chunk` samples at a time.
void ExpectSequentialDelivery(const ExpectedStream& stream, std::uint32_t chunk);

/// The same, then `sequences` engines with a dozen random requests each, drawn from `seed`.
void ExpectExactDelivery(const ExpectedStream& stream, std::uint64_t seed, int sequences);

} // namespace test
