/// Holds the frame walk against the decoder that it foretells.
#include "mpa/frame_walk.h"

#include "decoder/decoder_interface.h"
#include "mpa/synthetic_stream.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <random>

using namespace trnmpa;
using test::Bytes;
using test::FrameSpec;

namespace {

class ByteSource final : public IAMPBitsource {
public:
    explicit ByteSource(const Bytes& bytes) : bytes_(bytes) {}

    unsigned int Read(void* buffer, int count) override {
        const std::size_t given = std::min(static_cast<std::size_t>(count), bytes_.size() - position_);
        std::copy_n(bytes_.data() + position_, given, static_cast<std::uint8_t*>(buffer));
        position_ += given;
        return static_cast<unsigned int>(given);
    }

    std::int64_t Position() const { return static_cast<std::int64_t>(position_); }

private:
    const Bytes& bytes_;
    std::size_t position_ = 0;
};

bool Agree(const AMPFrameInfo& x, const AMPFrameInfo& y) {
    return x.synced == y.synced && x.layer == y.layer && x.version == y.version &&
           x.sampleRate == y.sampleRate && x.stereo == y.stereo && x.bitsPerSample == y.bitsPerSample &&
           x.pcmBytes == y.pcmBytes;
}

/// Offset and length of the frames that the decoder passes the body of, driven as the sample reader drives
/// it.
std::vector<std::pair<std::int64_t, std::int32_t>> DecoderFrames(const Bytes& bytes) {
    const std::unique_ptr<IAMPDecoder> decoder(AMPDecoderCreate());
    ByteSource source(bytes);
    std::array<short, kMaximumFramePcmValues> pcm = {};
    decoder->SetBitsource(&source);
    decoder->SetOutputBuffer(pcm.data());
    decoder->Reset();
    std::vector<std::pair<std::int64_t, std::int32_t>> frames;
    std::optional<AMPFrameInfo> reference;
    try {
        for (;;) {
            AMPFrameInfo info;
            do {
                decoder->ReadFrameHeader();
                decoder->GetFrameInfo(&info);
                if (!reference && info.synced != 0)
                    reference = info;
            } while (!reference || !Agree(info, *reference));
            decoder->SkipFrame();
            frames.emplace_back(source.Position() - info.frameBytes, info.frameBytes);
        }
    } catch (int) {
        return frames;
    }
}

std::vector<std::pair<std::int64_t, std::int32_t>> WalkedFrames(const Bytes& bytes) {
    test::MemorySource source(bytes);
    FrameWalk walk(source, 0);
    std::vector<std::pair<std::int64_t, std::int32_t>> frames;
    while (const auto frame = walk.Next())
        frames.emplace_back(frame->offset, frame->frameBytes);
    return frames;
}

FrameSpec AnySpec(std::mt19937& random, FrameSpec base) {
    base.bitRateIndex = static_cast<int>(random() % 5);
    base.isPadded = random() % 2 == 0;
    base.hasCrc = random() % 3 == 0;
    if (random() % 4 == 0)
        base.mode = static_cast<int>(random() % 4);
    if (random() % 8 == 0)
        base.version = static_cast<int>(random() % 4);
    if (random() % 8 == 0)
        base.sampleRateIndex = static_cast<int>(random() % 4);
    if (random() % 8 == 0)
        base.layer = 1 + static_cast<int>(random() % 3);
    return base;
}

/// Frames of one stream, some of another, with their right lengths or others, garbage between and in them.
Bytes Mixture(std::mt19937& random) {
    constexpr std::array<std::uint8_t, 6> kNearSync = {0xFF, 0xFF, 0xFB, 0xF3, 0xE3, 0x10};
    const FrameSpec base = {.version = static_cast<int>(random() % 4),
                            .layer = 2 + static_cast<int>(random() % 2),
                            .sampleRateIndex = static_cast<int>(random() % 3),
                            .mode = random() % 2 == 0 ? test::kStereo : test::kMono};
    Bytes bytes;
    for (int i = 0; i < 30; ++i) {
        const FrameSpec spec = AnySpec(random, base);
        MpaFrameHeader header;
        DecodeFrameHeader(test::HeaderOf(spec), header);
        const auto right = static_cast<std::size_t>(DecoderFrameBytes(header));
        const bool isRight = random() % 4 != 0 && right >= 4;
        test::AppendFrame(bytes, spec, isRight ? right : 4 + random() % 600);
        if (random() % 3 == 0)
            for (std::size_t garbage = random() % 20; garbage > 0; --garbage)
                bytes.push_back(kNearSync[random() % kNearSync.size()]);
    }
    bytes.resize(bytes.size() - random() % std::min<std::size_t>(bytes.size(), 300));
    return bytes;
}

} // namespace

TEST(FrameWalkAndDecoder, DeliverTheSameFrames) {
    std::mt19937 random(19930801);
    std::size_t frames = 0;
    for (int round = 0; round < 1500; ++round) {
        const Bytes bytes = Mixture(random);
        const auto expected = DecoderFrames(bytes);
        ASSERT_EQ(WalkedFrames(bytes), expected) << "round " << round;
        frames += expected.size();
    }
    EXPECT_GT(frames, 10000u);
}

TEST(FrameWalkAndDecoder, MeasureEveryHeaderAlike) {
    for (int pattern = 0xDF00; pattern < 1 << 16; ++pattern) {
        const FrameHeaderBytes header = {0xFF, static_cast<std::uint8_t>(pattern >> 8),
                                         static_cast<std::uint8_t>(pattern), 0};
        Bytes bytes(3000, 0);
        std::ranges::copy(header, bytes.begin());
        ASSERT_EQ(WalkedFrames(bytes), DecoderFrames(bytes)) << pattern;
    }
}
