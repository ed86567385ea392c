// The conformance streams against their expected PCM and, where the decoder must equal the standard, against
// the standard's own reference.

#include "decoder/stream_decode.h"
#include "support/test_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

namespace fs = std::filesystem;

std::vector<std::int16_t> ReadPcm(const fs::path& path) {
    const test::Bytes bytes = test::ReadFile(path);
    std::vector<std::int16_t> values(bytes.size() / 2);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<std::int16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
    return values;
}

struct Difference {
    int maximum = 0;
    double rms = 0;
    std::size_t differing = 0;
};

/// Over the values that both have; ours are scaled to 16 bits first.
Difference Compare(const std::vector<std::int16_t>& ours, int scale,
                   const std::vector<std::int16_t>& theirs) {
    Difference result;
    double squares = 0;
    const std::size_t count = std::min(ours.size(), theirs.size());
    for (std::size_t i = 0; i < count; ++i) {
        const int difference = std::abs(std::clamp(scale * ours[i], -32768, 32767) - theirs[i]);
        result.maximum = std::max(result.maximum, difference);
        result.differing += difference != 0 ? 1u : 0u;
        squares += static_cast<double>(difference) * difference;
    }
    result.rms = count > 0 ? std::sqrt(squares / static_cast<double>(count)) : 0;
    return result;
}

std::vector<fs::path> Streams(const fs::path& folder) {
    std::vector<fs::path> streams;
    for (const auto& entry : fs::directory_iterator(folder))
        if (entry.path().extension() == ".bit")
            streams.push_back(entry.path());
    std::ranges::sort(streams);
    return streams;
}

TEST(ConformanceVectors, MatchTheirReferences) {
    const auto folder = test::VectorsFolder();
    if (!folder)
        GTEST_SKIP() << "NO CONFORMANCE STREAMS: set TRN_TEST_VECTORS to their folder";
    const std::vector<fs::path> streams = Streams(*folder);
    ASSERT_FALSE(streams.empty()) << "no streams in " << *folder;
    std::printf("%-28s %9s | %4s %9s %9s | %4s %6s\n", "stream", "values", "max", "differing", "rms", "iso",
                "rms");
    for (const fs::path& path : streams) {
        SCOPED_TRACE(path.filename().string());
        const test::DecodedStream decoded = test::DecodeStream(test::ReadFile(path));
        const auto expected = ReadPcm(fs::path(path).replace_extension(".decoder.pcm"));
        EXPECT_EQ(decoded.pcm.size(), expected.size());
        const Difference difference = Compare(decoded.pcm, 1, expected);
        EXPECT_LE(difference.maximum, 1);
        EXPECT_LE(static_cast<double>(difference.differing), 0.005 * static_cast<double>(expected.size()));
        std::printf("%-28s %9zu | %4d %9zu %9.5f |", path.stem().string().c_str(), expected.size(),
                    difference.maximum, difference.differing, difference.rms);
        const fs::path iso = fs::path(path).replace_extension(".iso.pcm");
        if (fs::exists(iso) && !decoded.frames.empty()) {
            const bool isLayer3 = decoded.frames.front().layer == 3;
            const Difference standard = Compare(decoded.pcm, isLayer3 ? 2 : 1, ReadPcm(iso));
            EXPECT_LE(standard.maximum, isLayer3 ? 2 : 1);
            EXPECT_LE(standard.rms, 0.75);
            std::printf(" %4d %6.3f", standard.maximum, standard.rms);
        }
        std::printf("\n");
    }
}

} // namespace
