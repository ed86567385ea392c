// How long the built-in decoder takes for a file that is already in memory, without readers around it:
// decode_bench ROUNDS FILE... prints nanoseconds of processor time per sample of one channel, the best and
// the median round. Files are taken in turns, so that a slow moment of the machine hits all alike.

#include "decoder/decoder_interface.h"
#include "memory_source.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

namespace {

struct Stream {
    const char* name = nullptr;
    std::vector<char> bytes;
    std::vector<double> nanoseconds = {}; ///< per sample of one channel, by round
};

/// Decodes to the end; gives the number of 16-bit values.
std::size_t Decode(const std::vector<char>& bytes) {
    MemorySource source(bytes);
    const std::unique_ptr<IAMPDecoder> decoder(AMPDecoderCreate());
    std::int16_t pcm[kMaximumFramePcmValues];
    decoder->SetBitsource(&source);
    decoder->SetOutputBuffer(pcm);
    decoder->Reset();
    std::size_t values = 0;
    try {
        for (;;) {
            decoder->ReadFrameHeader();
            if (!decoder->DecodeFrame())
                return values;
            values += decoder->GetOutputSize();
        }
    } catch (int) {
        return values;
    }
}

void RunRound(Stream& stream) {
    const std::clock_t start = std::clock();
    const std::size_t values = Decode(stream.bytes);
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    stream.nanoseconds.push_back(1e9 * seconds / static_cast<double>(std::max<std::size_t>(values, 1)));
}

} // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 2 ? std::atoi(argv[1]) : 0;
    if (rounds < 1) {
        std::fputs("usage: decode_bench ROUNDS FILE...\n", stderr);
        return 2;
    }
    std::vector<Stream> streams;
    for (int i = 2; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "cannot read %s\n", argv[i]);
            return 1;
        }
        streams.push_back({argv[i], {std::istreambuf_iterator<char>(file), {}}});
    }
    for (int round = 0; round < rounds; ++round)
        for (Stream& stream : streams)
            RunRound(stream);
    for (Stream& stream : streams) {
        std::ranges::sort(stream.nanoseconds);
        std::printf("%-40s best %7.3f median %7.3f ns/sample\n", stream.name, stream.nanoseconds.front(),
                    stream.nanoseconds[stream.nanoseconds.size() / 2]);
    }
    return 0;
}
