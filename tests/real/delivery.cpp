#include "real/delivery.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>

namespace test {

PcmDistance Distance(std::span<const std::int16_t> left, std::span<const std::int16_t> right) {
    if (left.size() != right.size() || left.empty())
        throw std::invalid_argument("PCM of two lengths, or none");
    PcmDistance distance;
    double error = 0.0;
    double power = 0.0;
    for (std::size_t i = 0; i < left.size(); ++i) {
        const int apart = std::abs(left[i] - right[i]);
        distance.largest = std::max(distance.largest, apart);
        error += static_cast<double>(apart) * apart;
        power += static_cast<double>(left[i]) * left[i];
    }
    distance.rms = std::sqrt(error / static_cast<double>(left.size()));
    distance.signalToNoise =
        error > 0.0 ? 10.0 * std::log10(power / error) : std::numeric_limits<double>::infinity();
    return distance;
}

Pcm ReadThrough(PLUGIN_FILE_READER_CLASS& reader, std::int64_t samples, std::uint32_t chunk) {
    Pcm whole;
    for (std::int64_t start = 0; start < samples; start += chunk) {
        const auto count = static_cast<std::uint32_t>(std::min<std::int64_t>(chunk, samples - start));
        const auto part = ReadPcm(reader, start, count);
        if (!part) {
            ADD_FAILURE() << "reading " << count << " samples at " << start << " failed";
            break;
        }
        whole.insert(whole.end(), part->begin(), part->end());
    }
    return whole;
}

Pcm ExpectedAnswer(const Pcm& whole, int channels, std::int64_t start, std::uint32_t count) {
    const std::int64_t length = std::int64_t{count} * channels;
    const std::int64_t held = static_cast<std::int64_t>(whole.size());
    if (start > held / channels || start * channels + length > held)
        return Pcm(static_cast<std::size_t>(length), 0);
    const auto first = whole.begin() + start * channels;
    return Pcm(first, first + length);
}

Bytes BuildIndexBeside(LoadedModule& module, std::filesystem::path media) {
    const auto reader = module.CreateReader();
    PLUGIN_INDEX_PROGRESS progress = {};
    EXPECT_EQ(reader->OpenFile(Wide(media), TRN_OPEN_INDEX_BUILDER), 1);
    EXPECT_EQ(reader->CreateFileIndex(), 1);
    EXPECT_EQ(reader->GetIndexProgress(TRN_INDEX_PROGRESS_RECORD, &progress), 1);
    EXPECT_EQ(progress.state, 1u) << "not finished";
    return ReadFile(media += ".idx");
}

} // namespace test
