/// The decoder's kernels one by one, for each set that the processor can run; rates are samples of one
/// channel.

#include "decoder/kernels/kernel_table.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kSlots = trnmpa::kLinesPerSubband;
constexpr int kLines = trnmpa::kSubbands * kSlots;

std::vector<float> Music(std::size_t count) {
    std::mt19937 engine(1);
    std::vector<float> values(count);
    for (float& value : values)
        value = static_cast<float>(static_cast<std::int32_t>(engine())) / 262144.0f;
    return values;
}

void CountSamples(benchmark::State& state, int samples) {
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * samples);
}

void TransformSlots(benchmark::State& state, const trnmpa::KernelTable& kernels) {
    const auto channels = static_cast<int>(state.range(0));
    const std::vector<float> slots = Music(std::size_t{2} * kLines);
    trnmpa::SynthesisMemory memory[2];
    const trnmpa::SynthesisRows rows[2] = {memory[0].At(trnmpa::kPastSlots),
                                           memory[1].At(trnmpa::kPastSlots)};
    while (state.KeepRunning()) {
        kernels.transformSlots(slots.data(), channels, kSlots, true, rows);
        benchmark::ClobberMemory();
    }
    CountSamples(state, channels * kLines);
}

void WindowSlots(benchmark::State& state, const trnmpa::KernelTable& kernels) {
    const auto channels = static_cast<int>(state.range(0));
    const std::vector<float> slots = Music(std::size_t{2} * kLines);
    trnmpa::SynthesisMemory memory[2];
    const trnmpa::SynthesisRows rows[2] = {memory[0].At(trnmpa::kPastSlots),
                                           memory[1].At(trnmpa::kPastSlots)};
    kernels.transformSlots(slots.data(), channels, kSlots, true, rows);
    std::vector<std::int16_t> pcm(std::size_t{2} * kLines);
    while (state.KeepRunning()) {
        kernels.windowSlots(rows, channels, kSlots, pcm.data());
        benchmark::ClobberMemory();
    }
    CountSamples(state, channels * kLines);
}

void UndoMidSide(benchmark::State& state, const trnmpa::KernelTable& kernels) {
    // Twice gives the values again: they neither grow nor fade.
    std::vector<float> left = Music(kLines);
    std::vector<float> right = Music(kLines);
    while (state.KeepRunning()) {
        kernels.undoMidSide(left.data(), right.data(), kLines);
        benchmark::ClobberMemory();
    }
    CountSamples(state, 2 * kLines);
}

void ScaleSamples(benchmark::State& state, const trnmpa::KernelTable& kernels) {
    const std::vector<std::int32_t> samples(std::size_t{3} * trnmpa::kSubbands, 1000);
    const std::vector<std::int32_t> centres(trnmpa::kSubbands, 2047);
    const std::vector<double> factors(trnmpa::kSubbands, 0.7);
    std::vector<float> subbands(samples.size());
    while (state.KeepRunning()) {
        kernels.scaleSamples(samples.data(), centres.data(), factors.data(), 3, subbands.data());
        benchmark::ClobberMemory();
    }
    CountSamples(state, 3 * trnmpa::kSubbands);
}

void ReduceAliases(benchmark::State& state, const trnmpa::KernelTable& kernels) {
    std::vector<float> spectrum = Music(kLines);
    while (state.KeepRunning()) {
        kernels.reduceAliases(spectrum.data(), trnmpa::kSubbands - 1);
        benchmark::ClobberMemory();
    }
    CountSamples(state, kLines);
}

void InverseMdct(benchmark::State& state, const trnmpa::KernelTable& kernels) {
    const auto blockType = static_cast<int>(state.range(0));
    const std::vector<float> lines = Music(kLines);
    std::vector<float> overlap(kLines);
    std::vector<float> slots(kLines);
    while (state.KeepRunning()) {
        kernels.inverseMdct(lines.data(), blockType, trnmpa::kSubbands, overlap.data(), slots.data());
        benchmark::ClobberMemory();
    }
    CountSamples(state, kLines);
}

void DoubleSamples(benchmark::State& state, const trnmpa::KernelTable& kernels) {
    std::vector<std::uint8_t> samples(std::size_t{4} * kLines, std::uint8_t{20});
    std::vector<std::uint8_t> output(samples.size());
    while (state.KeepRunning()) {
        kernels.doubleSamples(samples.data(), samples.size() / 2, output.data());
        benchmark::ClobberMemory();
    }
    CountSamples(state, 2 * kLines);
}

using Measured = void (*)(benchmark::State&, const trnmpa::KernelTable&);

benchmark::internal::Benchmark* Register(const std::string& set, const char* name, Measured measured,
                                         const trnmpa::KernelTable& kernels) {
    return benchmark::RegisterBenchmark(
        (set + "/" + name).c_str(),
        [measured, &kernels](benchmark::State& state) { measured(state, kernels); });
}

void RegisterSet(const std::string& set, unsigned mask) {
    if ((mask & ~trnmpa::AvailableKernels()) != 0)
        return;
    trnmpa::SetKernelMask(mask);
    const trnmpa::KernelTable& kernels = trnmpa::Kernels();
    Register(set, "transformSlots", TransformSlots, kernels)->ArgName("channels")->Arg(1)->Arg(2);
    Register(set, "windowSlots", WindowSlots, kernels)->ArgName("channels")->Arg(1)->Arg(2);
    Register(set, "undoMidSide", UndoMidSide, kernels);
    Register(set, "reduceAliases", ReduceAliases, kernels);
    Register(set, "inverseMdct", InverseMdct, kernels)->ArgName("blockType")->Arg(0)->Arg(2);
    Register(set, "scaleSamples", ScaleSamples, kernels);
    Register(set, "doubleSamples", DoubleSamples, kernels);
}

} // namespace

int main(int argc, char** argv) {
    RegisterSet("plain", trnmpa::kPlainKernels);
    RegisterSet("sse2", trnmpa::kSse2Kernels);
    RegisterSet("avx2", trnmpa::kAvx2Kernels);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
