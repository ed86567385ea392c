// Exact delivery from any position after any history: thousands of random requests against one sequential
// decode.

#include "reader/expected_stream.h"
#include "reader/sample_reader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace {

using test::ExpectedStream;
using test::bitstream::ReservoirUse;
using test::bitstream::StreamOptions;
using test::bitstream::Version;

struct Request {
    std::int64_t start = 0;
    std::uint32_t count = 1;
};

/// Draws requests of all kinds; remembers where the last one ended.
class RequestMaker {
public:
    RequestMaker(const ExpectedStream& stream, std::uint64_t seed) : stream_(stream), engine_(seed) {}

    Request Next() {
        Request request;
        request.start = DrawStart();
        request.count = DrawCount();
        nextStart_ = request.start + request.count;
        return request;
    }

    std::uint64_t Below(std::int64_t count) {
        return count > 0 ? engine_() % static_cast<std::uint64_t>(count) : 0;
    }

private:
    std::int64_t DrawStart() {
        const auto frames = stream_.samples / stream_.samplesPerFrame + 1;
        const auto frame = static_cast<std::int64_t>(Below(frames));
        switch (Below(10)) {
        case 0:
            return 0;
        case 1:
        case 2:
        case 3:
            return nextStart_;
        case 4: // a frame's first sample
            return std::max<std::int64_t>(frame * stream_.samplesPerFrame - stream_.skippedSamples, 0);
        case 5: // beside it
            return std::max<std::int64_t>(frame * stream_.samplesPerFrame - stream_.skippedSamples +
                                              static_cast<std::int64_t>(Below(3)) - 1,
                                          0);
        case 6: // near the end
            return std::max<std::int64_t>(stream_.samples - static_cast<std::int64_t>(Below(3000)), 0);
        case 7: // behind it
            return Below(4) == 0 ? stream_.samples + static_cast<std::int64_t>(Below(100000))
                                 : nextStart_ / 2;
        default:
            return static_cast<std::int64_t>(Below(stream_.samples));
        }
    }

    std::uint32_t DrawCount() {
        switch (Below(8)) {
        case 0:
            return 1;
        case 1:
            return static_cast<std::uint32_t>(stream_.samplesPerFrame);
        case 2:
            return static_cast<std::uint32_t>(Below(8 * stream_.samplesPerFrame)) + 1;
        case 3:
            return Below(20) == 0 ? static_cast<std::uint32_t>(stream_.samples) + 1 : 7;
        default:
            return static_cast<std::uint32_t>(Below(stream_.samplesPerFrame)) + 1;
        }
    }

    const ExpectedStream& stream_;
    std::mt19937_64 engine_;
    std::int64_t nextStart_ = 0;
};

class Engine {
public:
    explicit Engine(const ExpectedStream& stream) {
        KW_MEDIA_BASE_INFO_ST info;
        isOpen = reader_.Initialize() == 1 && reader_.SetInputFile(test::Wide(stream.path)) == 1 &&
                 reader_.GetStreamInfo(&info) == 1 && info.audioFormat.nBlockAlign == stream.blockAlign;
    }

    std::int32_t Read(std::int64_t start, std::uint32_t count) {
        AudioReaderDataIn request;
        request.startSample = start;
        request.sampleCount = count;
        return reader_.GetSamples(request, data, size, nullptr);
    }

    /// A history that must not matter.
    void Spoil(const ExpectedStream& stream) {
        Read(stream.samples - 1, 2);
        Read(-1, 1);
        Read(stream.samples / 2, 1);
        Read(std::numeric_limits<std::int64_t>::max(), 1);
        Read(0, 0);
        Read(stream.samples + 1000000, 3);
    }

    bool isOpen = false;
    unsigned char* data = nullptr;
    std::int32_t size = 0;

private:
    trnmpa::KwMpAudioReader2 reader_;
};

::testing::AssertionResult Answers(Engine& engine, const ExpectedStream& stream, const Request& request) {
    const auto expected = stream.Answer(request.start, request.count);
    const std::int32_t result = engine.Read(request.start, request.count);
    if (result != 1 || engine.size != static_cast<std::int32_t>(expected.size()))
        return ::testing::AssertionFailure() << "result " << result << ", " << engine.size << " bytes";
    if (std::memcmp(engine.data, expected.data(), expected.size()) != 0)
        return ::testing::AssertionFailure() << "other samples";
    return ::testing::AssertionSuccess();
}

void ExpectExactDelivery(const ExpectedStream& stream, std::uint64_t seed, int sequences) {
    constexpr int kRequestsPerSequence = 12;
    ASSERT_GT(stream.samples, 4 * stream.samplesPerFrame);
    for (int sequence = 0; sequence < sequences; ++sequence) {
        RequestMaker requests(stream, seed * 1000 + static_cast<std::uint64_t>(sequence));
        Engine engine(stream);
        ASSERT_TRUE(engine.isOpen);
        if (sequence % 3 == 2)
            engine.Spoil(stream);
        std::string history;
        for (int i = 0; i < kRequestsPerSequence; ++i) {
            const Request request = requests.Next();
            history += " " + std::to_string(request.start) + "+" + std::to_string(request.count);
            ASSERT_TRUE(Answers(engine, stream, request)) << "sequence " << sequence << ":" << history;
        }
    }
}

std::string Describe(const StreamOptions& options) {
    return "version " + std::to_string(static_cast<int>(options.version)) + " layer " +
           std::to_string(options.layer) + " rate " + std::to_string(options.sampleRateIndex) + " mode " +
           std::to_string(options.mode) + " seed " + std::to_string(options.seed);
}

constexpr int kModes[] = {test::model::kStereo, test::model::kJointStereo, test::model::kSingleChannel};

/// Bit rates that jump, with as much in the reservoir as it may hold.
std::vector<StreamOptions> VariableStreams() {
    std::vector<StreamOptions> streams;
    for (const Version version : {Version::kMpeg1, Version::kMpeg2, Version::kMpeg25}) {
        for (int rate = 0; rate < 3; ++rate) {
            for (const int mode : kModes) {
                StreamOptions options;
                options.version = version;
                options.sampleRateIndex = rate;
                options.mode = mode;
                options.modeExtensions = {0, 1, 2, 3};
                options.frames = 90;
                options.seed = streams.size() + 1;
                options.crc = streams.size() % 2 == 1;
                options.bitrateIndices = {1, 1, 1, 1, 14};
                options.layer3.blocks = {{0, false}, {1, false}, {2, false}, {2, true}, {3, false}};
                options.layer3.reservoir = ReservoirUse::kFull;
                streams.push_back(options);
            }
        }
    }
    return streams;
}

std::vector<StreamOptions> LayerTwoStreams() {
    std::vector<StreamOptions> streams;
    for (int rate = 0; rate < 3; ++rate) {
        for (const int mode : kModes) {
            StreamOptions options;
            options.layer = 2;
            options.sampleRateIndex = rate;
            options.mode = mode;
            options.modeExtensions = {0, 1, 2, 3};
            options.frames = 40;
            options.seed = streams.size() + 1;
            options.bitrateIndices = {10};
            streams.push_back(options);
        }
    }
    return streams;
}

TEST(RandomAccess, VariableBitRateWithAnIndex) {
    const test::ScratchFolder folder;
    for (const StreamOptions& options : VariableStreams()) {
        SCOPED_TRACE(Describe(options));
        const auto stream = test::AddIndexedStream(folder, test::bitstream::WriteStream(options));
        ExpectExactDelivery(stream, options.seed, 20);
        if (HasFatalFailure())
            return;
    }
}

TEST(RandomAccess, LayerTwoWithAnIndex) {
    const test::ScratchFolder folder;
    for (const StreamOptions& options : LayerTwoStreams()) {
        SCOPED_TRACE(Describe(options));
        const auto stream = test::AddIndexedStream(folder, test::bitstream::WriteStream(options));
        ExpectExactDelivery(stream, options.seed, 10);
        if (HasFatalFailure())
            return;
    }
}

/// Constant bit rates, at rates with and without padding.
TEST(RandomAccess, ConstantBitRateWithoutAnIndex) {
    const test::ScratchFolder folder;
    int used = 0;
    for (StreamOptions options : VariableStreams()) {
        for (const int bitRate : {2, 5, 9, 14}) {
            options.bitrateIndices = {bitRate};
            SCOPED_TRACE(Describe(options) + " bit rate " + std::to_string(bitRate));
            const auto written = test::bitstream::WriteStream(options);
            if (!test::IsFoundByArithmetic(written))
                continue;
            ++used;
            ExpectExactDelivery(test::AddPlainStream(folder, written), options.seed, 8);
            if (HasFatalFailure())
                return;
        }
    }
    EXPECT_GT(used, 90) << "too few streams of the 108 are found by arithmetic";
}

TEST(RandomAccess, LayerTwoWithoutAnIndex) {
    const test::ScratchFolder folder;
    int used = 0;
    for (const StreamOptions& options : LayerTwoStreams()) {
        SCOPED_TRACE(Describe(options));
        const auto written = test::bitstream::WriteStream(options);
        if (!test::IsFoundByArithmetic(written))
            continue;
        ++used;
        ExpectExactDelivery(test::AddPlainStream(folder, written), options.seed, 10);
        if (HasFatalFailure())
            return;
    }
    EXPECT_GT(used, 7);
}

/// Frame 0 in pieces, and a fresh engine whose first request begins at the boundary of frame 1.
TEST(RandomAccess, TheFirstFrames) {
    const test::ScratchFolder folder;
    const auto options = VariableStreams().front();
    const auto stream = test::AddIndexedStream(folder, test::bitstream::WriteStream(options));
    Engine inPieces(stream);
    for (std::int64_t start = 0; start < 3 * stream.samplesPerFrame; start += 100)
        ASSERT_TRUE(Answers(inPieces, stream, {start, 100})) << start;
    for (std::int64_t start = 500; start >= 0; start -= 100)
        ASSERT_TRUE(Answers(inPieces, stream, {start, 100})) << start;
    for (std::int64_t frame = 0; frame < 5; ++frame) {
        Engine fresh(stream);
        ASSERT_TRUE(Answers(fresh, stream, {frame * stream.samplesPerFrame, 100})) << frame;
    }
}

} // namespace
