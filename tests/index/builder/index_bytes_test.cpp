/// What stands in the index file, byte for byte.
#include "index/builder/index_model.h"
#include "index/builder/index_run.h"
#include "mpa/synthetic_stream.h"

#include <gmock/gmock.h>

#include <vector>

namespace {

using test::Bytes;
using test::FrameSpec;
using test::IndexRun;

const FrameSpec kFrame = {}; // 417 bytes

class IndexBytes : public testing::Test {
protected:
    IndexRun Run(const Bytes& media) { return test::RunBuilderOn(scratch_, media); }

    /// Runs, and compares all that can be seen with the model.
    IndexRun RunAsTheModel(const Bytes& media) {
        const IndexRun run = Run(media);
        const test::IndexModel model = test::ModelOfIndexing(media);
        EXPECT_EQ(run.opened, model.opens ? 1 : 0);
        EXPECT_EQ(run.index, model.index);
        EXPECT_EQ(run.progress.percent, model.percent);
        EXPECT_EQ(run.progress.framesIndexed, model.framesIndexed);
        EXPECT_EQ(run.progress.state, model.opens ? TRN_INDEX_FINISHED : TRN_INDEX_FAILED);
        return run;
    }

    test::ScratchFolder scratch_;
};

std::uint32_t Number(const Bytes& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
        value = value << 8 | bytes.at(offset + i);
    return value;
}

/// The frame offsets of all entries.
std::vector<std::uint32_t> Offsets(const Bytes& index) {
    std::vector<std::uint32_t> offsets;
    for (std::size_t place = 28; place < index.size(); place += 8)
        offsets.push_back(Number(index, place));
    return offsets;
}

Bytes TwoFramesAround(const Bytes& between) {
    Bytes media;
    test::AppendFrame(media, kFrame, 417);
    test::Append(media, between);
    test::AppendFrame(media, kFrame, 417);
    return media;
}

TEST_F(IndexBytes, OfThreeFramesOfLayerThree) {
    const IndexRun run = Run(test::Frames(kFrame, 417, 3));
    EXPECT_EQ(run.opened, 1);
    EXPECT_EQ(run.built, 1);
    // 1251 bytes of media; 128000 bit/s, 44100 Hz; entries at 417 and 834.
    EXPECT_EQ(
        run.index,
        (Bytes{2,    0,    0,    0, 0xE3, 4,  0, 0,    3,    1,    2, 0, 0,    0xF4, 0x01, // until bit rate
               0x00, 0x44, 0xAC, 0, 0,    16, 0, 0xA1, 0x01, 0x80, 4, 0, 0, // the format's rest
               0xA1, 0x01, 0,    0, 0xA1, 1,  0, 0,    0x42, 0x03, 0, 0, 0xA1, 0x01, 0,    0}));
    EXPECT_EQ(run.progress.percent, 100u);
    EXPECT_EQ(run.progress.framesIndexed, 2u);
    EXPECT_EQ(run.progress.state, 1u);
}

TEST_F(IndexBytes, OfMonoFramesOfMpeg2LayerTwo) {
    // 64 kbit/s at 24000 Hz is 384 bytes by the standard; the index has always said half of that.
    const FrameSpec spec = {
        .version = test::kMpeg2, .layer = 2, .bitRateIndex = 8, .sampleRateIndex = 1, .mode = test::kMono};
    const IndexRun run = Run(test::Frames(spec, 384, 2));
    EXPECT_EQ(run.index,
              (Bytes{1,    0,    0,    0, 0,    3,  0, 0,    2, 2,    1, 0, 0, 0xFA, 0,
                     0,    0xC0, 0x5D, 0, 0,    16, 0, 0xC0, 0, 0x80, 4, 0, 0, // 24000 Hz, 192 bytes, 1152
                     0x80, 0x01, 0,    0, 0xC0, 0,  0, 0}));
}

TEST_F(IndexBytes, EntryZeroIsTheSecondFrame) {
    for (int frames = 1; frames < 6; ++frames) {
        const IndexRun run = RunAsTheModel(test::Frames(kFrame, 417, frames));
        EXPECT_EQ(run.index.size(), 28u + 8u * (static_cast<unsigned>(frames) - 1));
        EXPECT_EQ(run.progress.percent, 100u);
        if (frames > 1) {
            EXPECT_EQ(Offsets(run.index).front(), 417u);
        }
    }
}

TEST_F(IndexBytes, EveryFormat) {
    // All second and third bytes that make a header; the rest of a frame is only skipped.
    int formats = 0;
    for (const int version : {test::kMpeg1, test::kMpeg2, test::kMpeg25, test::kReservedVersion})
        for (const int layer : {2, 3})
            for (int rate = 1; rate < 15; ++rate)
                for (int kind = 0; kind < 6; ++kind) {
                    const FrameSpec spec = {.version = version,
                                            .layer = layer,
                                            .bitRateIndex = rate,
                                            .sampleRateIndex = kind / 2,
                                            .isPadded = kind % 2 == 1,
                                            .mode = rate % 4,
                                            .hasCrc = kind == 3};
                    Bytes media = test::Frames(spec, 4, 1);
                    media.resize(media.size() + 2000);
                    test::AppendFrame(media, spec, 4);
                    RunAsTheModel(media);
                    ++formats;
                }
    EXPECT_EQ(formats, 4 * 2 * 14 * 6);
}

TEST_F(IndexBytes, ManyFramesOfChangingLength) {
    const IndexRun run = RunAsTheModel(test::PaddedFrames(20000));
    EXPECT_EQ(run.progress.framesIndexed, 19999u);
    EXPECT_EQ(run.progress.percent, 100u);
}

TEST_F(IndexBytes, ALargeFilesPercentWraps) {
    // 50,000 frames of 1440 bytes: 72,000,000 bytes, of which 100 times is 2,905,032,704 in 32 bits.
    const IndexRun run = RunAsTheModel(test::Frames({.bitRateIndex = 14, .sampleRateIndex = 2}, 1440, 50000));
    EXPECT_EQ(run.progress.framesIndexed, 49999u);
    EXPECT_EQ(run.progress.percent, 40u);
}

TEST_F(IndexBytes, AFrameThatIsCutOffHasItsEntry) {
    Bytes media = test::Frames(kFrame, 417, 4);
    media.resize(3 * 417 + 4);
    IndexRun run = RunAsTheModel(media);
    EXPECT_EQ(Offsets(run.index), (std::vector<std::uint32_t>{417, 834, 1251}));
    EXPECT_EQ(run.progress.percent, 132u) << "it counts to where the frame would end";
    media.resize(3 * 417 + 3);
    run = RunAsTheModel(media);
    EXPECT_EQ(Offsets(run.index), (std::vector<std::uint32_t>{417, 834}));
    EXPECT_EQ(run.progress.percent, 100u);
}

TEST_F(IndexBytes, GarbageBetweenFramesIsJumped) {
    for (const std::size_t size : {1u, 2u, 3u, 4u, 5u, 100u, 4092u, 4095u, 4096u}) {
        Bytes garbage(size, 0);
        garbage.back() = 0x55;
        const IndexRun run = RunAsTheModel(TwoFramesAround(garbage));
        EXPECT_EQ(Offsets(run.index), std::vector<std::uint32_t>{static_cast<std::uint32_t>(417 + size)});
    }
}

TEST_F(IndexBytes, TooMuchGarbageIsTheEnd) {
    for (const std::size_t size : {4100u, 4104u, 5000u}) {
        const IndexRun run = RunAsTheModel(TwoFramesAround(Bytes(size, 0)));
        EXPECT_EQ(run.progress.state, 1u);
        EXPECT_EQ(run.progress.percent, 100u);
        EXPECT_EQ(run.progress.framesIndexed, 0u);
    }
}

TEST_F(IndexBytes, TheSearchsStepsMayMissALowRateHeader) {
    Bytes media = test::Frames(kFrame, 417, 1);
    media.push_back(0);
    test::AppendFrame(media, {.version = test::kMpeg25}, 522);
    EXPECT_THAT(Offsets(RunAsTheModel(media).index), testing::IsEmpty());
    media.insert(media.begin() + 417, 3, std::uint8_t{0});
    EXPECT_THAT(Offsets(RunAsTheModel(media).index), testing::ElementsAre(421u));
}

TEST_F(IndexBytes, OtherFormatsAmongTheFramesAreListed) {
    Bytes media = test::Frames(kFrame, 417, 2);
    test::AppendFrame(media, {.layer = 2, .bitRateIndex = 8}, 417);
    test::AppendFrame(media, {.version = test::kMpeg2, .bitRateIndex = 8, .mode = test::kMono}, 208);
    test::AppendFrame(media, kFrame, 417);
    const IndexRun run = RunAsTheModel(media);
    EXPECT_THAT(Offsets(run.index), testing::ElementsAre(417u, 834u, 1251u, 1459u));
}

TEST_F(IndexBytes, LayerOneAndFreeFormatAreNoFrames) {
    for (const FrameSpec& spec : {FrameSpec{.layer = 1}, FrameSpec{.bitRateIndex = 0},
                                  FrameSpec{.bitRateIndex = 15}, FrameSpec{.sampleRateIndex = 3}}) {
        const IndexRun run = RunAsTheModel(test::Frames(spec, 416, 30));
        EXPECT_EQ(run.opened, 0);
        EXPECT_EQ(run.index, test::kPlaceholder);
    }
    Bytes mixed = test::Frames(kFrame, 417, 1);
    test::Append(mixed, test::Frames({.layer = 1}, 416, 5));
    test::Append(mixed, test::Frames(kFrame, 417, 1));
    EXPECT_THAT(Offsets(RunAsTheModel(mixed).index), testing::ElementsAre(417u + 5 * 416u));
}

TEST_F(IndexBytes, FilesTooShortForAFrame) {
    for (std::size_t size = 0; size < 9; ++size)
        EXPECT_EQ(RunAsTheModel(Bytes(size, 0xFF)).opened, 0) << size;
    Bytes header = test::Frames(kFrame, 4, 1);
    EXPECT_EQ(RunAsTheModel(header).opened, 1) << "a header is all that is looked at";
    header.pop_back();
    EXPECT_EQ(RunAsTheModel(header).opened, 0);
}

} // namespace
