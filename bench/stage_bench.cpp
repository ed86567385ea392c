// stage_bench FILE: how long each stage of a layer III decoder takes, in cycles a value (a sample of one
// channel), by set of kernels; prints a Markdown table. FILE begins with a frame.

#include "decoder/kernels/kernel_table.h"
#include "memory_source.h"
#include "staged_decoder.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using Clock = StageClock;

constexpr int kRounds = 200;
constexpr int kSeconds = 10;

/// PCM as the reader delivers it: kSeconds of it, or what there is.
std::vector<std::int16_t> DecodeInStages(const std::vector<char>& bytes, Stopwatch& watch) {
    MemorySource source(bytes);
    const auto decoder = std::make_unique<StagedDecoder>(source);
    std::vector<std::int16_t> pcm;
    std::int16_t frame[kMaximumFramePcmValues];
    std::int64_t samples = 0;
    while (const int values = decoder->DecodeFrame(watch, frame)) {
        pcm.insert(pcm.end(), frame, frame + values);
        samples += values / decoder->Channels();
        if (samples >= std::int64_t{kSeconds} * decoder->SampleRate())
            break;
    }
    return pcm;
}

/// The same by the decoder itself.
std::vector<std::int16_t> Decode(const std::vector<char>& bytes, std::size_t values) {
    MemorySource source(bytes);
    const std::unique_ptr<IAMPDecoder> decoder(AMPDecoderCreate());
    std::vector<std::int16_t> pcm;
    std::int16_t frame[kMaximumFramePcmValues];
    decoder->SetBitsource(&source);
    decoder->SetOutputBuffer(frame);
    decoder->Reset();
    while (pcm.size() < values) {
        decoder->ReadFrameHeader();
        if (!decoder->DecodeFrame())
            break;
        pcm.insert(pcm.end(), frame, frame + decoder->GetOutputSize());
    }
    auto* doubled = reinterpret_cast<std::uint8_t*>(pcm.data());
    trnmpa::PlainKernels().doubleSamples(doubled, pcm.size(), doubled);
    return pcm;
}

double Elapsed(Clock::time_point started) {
    return std::chrono::duration<double, std::nano>(Clock::now() - started).count();
}

/// What one lap takes.
double LapNanoseconds() {
    constexpr int kLaps = 1000;
    double least = std::numeric_limits<double>::max();
    for (int round = 0; round < 100; ++round) {
        Stopwatch watch;
        watch.Start();
        const Clock::time_point started = Clock::now();
        for (int i = 0; i < kLaps; ++i)
            watch.Lap(kHeader);
        least = std::min(least, Elapsed(started) / kLaps);
    }
    return least;
}

/// By a chain of multiplications, which take three cycles each on all x86-64 processors of today.
double CyclesPerNanosecond() {
    constexpr int kMultiplications = 100000;
    constexpr double kCycles = 3;
    double least = std::numeric_limits<double>::max();
    volatile std::uint64_t seed = 3;
    for (int round = 0; round < 100; ++round) {
        std::uint64_t value = seed;
        const Clock::time_point started = Clock::now();
        for (int i = 0; i < kMultiplications; ++i)
            value *= value;
        seed = value;
        least = std::min(least, Elapsed(started));
    }
    return kCycles * kMultiplications / least;
}

/// Cycles a value of each stage with the kernels of `mask`.
Nanoseconds Measure(const std::vector<char>& bytes, unsigned mask) {
    trnmpa::SetKernelMask(mask);
    const double lap = LapNanoseconds();
    const double cycles = CyclesPerNanosecond();
    Nanoseconds least;
    least.fill(std::numeric_limits<double>::max());
    for (int round = 0; round < kRounds; ++round) {
        Stopwatch watch;
        const std::vector<std::int16_t> pcm = DecodeInStages(bytes, watch);
        if (pcm.empty() || (round == 0 && pcm != Decode(bytes, pcm.size())))
            throw std::runtime_error("the stages do not give what the decoder gives");
        const Nanoseconds taken = watch.Taken(lap);
        for (std::size_t i = 0; i < kStages; ++i)
            least[i] = std::min(least[i], cycles * taken[i] / static_cast<double>(pcm.size()));
    }
    return least;
}

struct Column {
    const char* name;
    unsigned mask;
};
constexpr Column kColumns[] = {
    {"portable", trnmpa::kPlainKernels}, {"SSE2", trnmpa::kSse2Kernels}, {"AVX2", trnmpa::kAvx2Kernels}};

void PrintTable(const std::string& file, const std::vector<char>& bytes) {
    std::vector<Nanoseconds> columns;
    std::string head = "| " + file + " |";
    std::string rule = "|---|";
    for (const Column& column : kColumns) {
        if ((column.mask & ~trnmpa::AvailableKernels()) != 0)
            continue;
        columns.push_back(Measure(bytes, column.mask));
        head += std::string(" ") + column.name + " |";
        rule += "---:|";
    }
    std::printf("%s\n%s\n", head.c_str(), rule.c_str());
    std::vector<double> sums(columns.size());
    for (std::size_t stage = 0; stage < kStages; ++stage) {
        std::printf("| %s |", kStageNames[stage]);
        for (std::size_t i = 0; i < columns.size(); ++i) {
            std::printf(" %.2f |", columns[i][stage]);
            sums[i] += columns[i][stage];
        }
        std::printf("\n");
    }
    std::printf("| together |");
    for (const double sum : sums)
        std::printf(" %.2f |", sum);
    std::printf("\n");
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: stage_bench FILE\n", stderr);
        return 2;
    }
    std::ifstream file(argv[1], std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    const std::string path = argv[1];
    try {
        PrintTable(path.substr(path.rfind('/') + 1), bytes);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "stage_bench: %s: %s\n", argv[1], failure.what());
        return 1;
    } catch (int code) {
        std::fprintf(stderr, "stage_bench: %s: decoder code %d\n", argv[1], code);
        return 1;
    }
    return 0;
}
