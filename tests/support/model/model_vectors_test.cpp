/// The model against the streams with known answers.
#include "support/model/decoder_model.h"
#include "support/test_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>

namespace {

namespace fs = std::filesystem;

std::vector<std::int16_t> ReadPcm(const fs::path& path) {
    const test::Bytes bytes = test::ReadFile(path);
    std::vector<std::int16_t> values(bytes.size() / 2);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<std::int16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
    return values;
}

struct Difference {
    int largest = 0;
    std::size_t values = 0; ///< that differ at all
};

Difference Compare(const std::vector<std::int16_t>& a, const std::vector<std::int16_t>& b) {
    Difference difference;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        const int apart = std::abs(a[i] - b[i]);
        difference.largest = std::max(difference.largest, apart);
        difference.values += apart != 0 ? 1 : 0;
    }
    return difference;
}

TEST(ModelVectors, EveryStreamDecodesToItsKnownAnswer) {
    const auto folder = test::VectorsFolder();
    if (!folder)
        GTEST_SKIP()
            << "SKIPPED: the streams with known answers are absent; set TRN_TEST_VECTORS to their folder";
    int streams = 0;
    std::size_t values = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(*folder)) {
        if (entry.path().extension() != ".bit")
            continue;
        const std::string name = entry.path().stem().string();
        const auto expected = ReadPcm(*folder / (name + ".decoder.pcm"));
        const auto actual = test::model::DecodeStream(test::ReadFile(entry.path()));
        EXPECT_EQ(actual.size(), expected.size()) << name;
        const Difference difference = Compare(actual, expected);
        EXPECT_LE(difference.largest, 1) << name;
        // Two calculations in double precision part only where a sum lies almost exactly on a half.
        EXPECT_LE(difference.values, expected.size() / 10000) << name;
        if (difference.values != 0)
            std::cout << name << ": " << difference.values << " of " << expected.size()
                      << " values differ, by " << difference.largest << " at most\n";
        ++streams;
        values += expected.size();
    }
    std::cout << streams << " streams, " << values << " values\n";
    EXPECT_GE(streams, 36);
}

} // namespace
