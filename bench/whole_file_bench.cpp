// whole_file_bench FILE ROUNDS: the whole file to 16-bit samples in memory, by the sample reader with this
// processor's kernels and with the portable ones, by libmpg123 with its fastest and its generic decoder, and
// by libavcodec with libswresample, in turns; prints rows of a Markdown table.

#include "av_decoder.h"
#include "decoder/kernels/kernel_table.h"
#include "os/paths.h"
#include "reader/sample_reader.h"

#include <mpg123.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Pcm = std::vector<std::int16_t>;

void Require(bool condition, const char* what) {
    if (!condition)
        throw std::runtime_error(what);
}

/// In requests of one second. `samples`: of the whole stream, per channel.
void DecodeWithSampleReader(const std::string& path, std::int64_t samples, Pcm& pcm) {
    trnmpa::KwMpAudioReader2 reader;
    KW_MEDIA_BASE_INFO_ST info;
    Require(reader.Initialize() == 1 && reader.SetInputFile(os::WidenUtf8(path)) == 1 &&
                reader.GetStreamInfo(&info) == 1,
            "the sample reader cannot open the file");
    AudioReaderDataIn request;
    while (request.startSample < samples) {
        request.sampleCount = static_cast<std::uint32_t>(
            std::min<std::int64_t>(info.audioFormat.nSamplesPerSec, samples - request.startSample));
        unsigned char* data = nullptr;
        std::int32_t size = 0;
        Require(reader.GetSamples(request, data, size, nullptr) == 1, "the sample reader failed");
        const std::size_t before = pcm.size();
        pcm.resize(before + static_cast<std::size_t>(size) / sizeof(std::int16_t));
        std::memcpy(pcm.data() + before, data, static_cast<std::size_t>(size));
        request.startSample += request.sampleCount;
    }
}

/// `decoder`: one of the library's, null for the fastest.
void DecodeWithMpg123(const std::string& path, const char* decoder, Pcm& pcm) {
    const std::unique_ptr<mpg123_handle, decltype(&mpg123_delete)> handle(mpg123_new(decoder, nullptr),
                                                                          mpg123_delete);
    Require(handle != nullptr && mpg123_param(handle.get(), MPG123_ADD_FLAGS, MPG123_QUIET, 0) == MPG123_OK &&
                mpg123_open(handle.get(), path.c_str()) == MPG123_OK,
            "libmpg123 cannot open the file");
    constexpr std::size_t kValues = 65536;
    int result = MPG123_OK;
    while (result == MPG123_OK || result == MPG123_NEW_FORMAT) {
        const std::size_t before = pcm.size();
        pcm.resize(before + kValues);
        std::size_t bytes = 0;
        result = mpg123_read(handle.get(), reinterpret_cast<unsigned char*>(pcm.data() + before),
                             kValues * sizeof(std::int16_t), &bytes);
        pcm.resize(before + bytes / sizeof(std::int16_t));
    }
    Require(result == MPG123_DONE, "libmpg123 failed");
}

struct Contestant {
    const char* name;
    std::function<void(Pcm&)> decode;
    std::vector<double> nanoseconds = {}; ///< a value, which is a sample of one channel

    double Median() const {
        std::vector<double> sorted = nanoseconds;
        std::ranges::sort(sorted);
        return sorted[sorted.size() / 2];
    }
};

void Run(Contestant& contestant, Pcm& pcm, bool counts) {
    pcm.clear();
    const std::clock_t started = std::clock();
    contestant.decode(pcm);
    const double nanoseconds = 1e9 * static_cast<double>(std::clock() - started) / CLOCKS_PER_SEC;
    Require(!pcm.empty(), "nothing was decoded");
    if (counts)
        contestant.nanoseconds.push_back(nanoseconds / static_cast<double>(pcm.size()));
}

std::int64_t SamplesOf(const std::string& path) {
    const std::unique_ptr<mpg123_handle, decltype(&mpg123_delete)> handle(mpg123_new(nullptr, nullptr),
                                                                          mpg123_delete);
    Require(handle != nullptr && mpg123_open(handle.get(), path.c_str()) == MPG123_OK &&
                mpg123_scan(handle.get()) == MPG123_OK,
            "libmpg123 cannot count the samples");
    return mpg123_length(handle.get());
}

void Print(const std::string& file, const Contestant& one, const Contestant& fastest,
           const Contestant& generic) {
    const auto [least, most] = std::ranges::minmax(one.nanoseconds);
    std::printf("| %s | %s | %.2f | %.2f to %.2f | %.2f | %.2f |\n", file.c_str(), one.name, one.Median(),
                least, most, fastest.Median() / one.Median(), generic.Median() / one.Median());
}

void Measure(const std::string& path, int rounds) {
    const std::int64_t samples = SamplesOf(path);
    const auto withKernels = [&](unsigned mask) {
        return [&path, samples, mask](Pcm& pcm) {
            trnmpa::SetKernelMask(mask);
            DecodeWithSampleReader(path, samples, pcm);
        };
    };
    std::array<Contestant, 5> contestants = {{
        {"sample reader", withKernels(trnmpa::kAllKernels)},
        {"sample reader, portable kernels", withKernels(trnmpa::kPlainKernels)},
        {"libmpg123", [&](Pcm& pcm) { DecodeWithMpg123(path, nullptr, pcm); }},
        {"libmpg123, generic", [&](Pcm& pcm) { DecodeWithMpg123(path, "generic", pcm); }},
        {"libavcodec", [&](Pcm& pcm) { bench::AvDecoder(path).Decode(pcm); }},
    }};
    Pcm pcm;
    // Another one begins each round, since it finds the processor as the last one of the round before left
    // it.
    for (int round = 0; round <= rounds; ++round)
        for (std::size_t i = 0; i < contestants.size(); ++i)
            Run(contestants[(static_cast<std::size_t>(round) + i) % contestants.size()], pcm, round > 0);
    const Contestant& fastest =
        contestants[2].Median() < contestants[4].Median() ? contestants[2] : contestants[4];
    const std::string name = path.substr(path.rfind('/') + 1);
    for (const Contestant& contestant : contestants)
        Print(name, contestant, fastest, contestants[3]);
}

} // namespace

int main(int argc, char** argv) {
    av_log_set_level(AV_LOG_ERROR);
    const int rounds = argc == 3 ? std::atoi(argv[2]) : 0;
    if (rounds < 1) {
        std::fputs("usage: whole_file_bench FILE ROUNDS\n", stderr);
        return 2;
    }
    try {
        Measure(argv[1], rounds);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "whole_file_bench: %s\n", failure.what());
        return 1;
    }
    return 0;
}
