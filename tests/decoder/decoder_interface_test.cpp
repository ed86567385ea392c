// The decoder's contract: header search, frame information, error codes, reset.

#include "decoder/stream_decode.h"
#include "support/bitstream/stream.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using test::bitstream::StreamOptions;
using test::bitstream::Version;

struct Fixture {
    explicit Fixture(std::vector<std::uint8_t> bytes) : stream(std::move(bytes)), source(stream) {
        decoder->SetBitsource(&source);
        decoder->SetOutputBuffer(pcm);
        decoder->Reset();
    }

    AMPFrameInfo ReadHeader() {
        AMPFrameInfo info;
        decoder->ReadFrameHeader();
        decoder->GetFrameInfo(&info);
        return info;
    }

    int ThrownByReadHeader() {
        try {
            decoder->ReadFrameHeader();
        } catch (int code) {
            return code;
        }
        return 0;
    }

    std::vector<std::uint8_t> stream;
    test::MemorySource source;
    std::unique_ptr<IAMPDecoder> decoder{AMPDecoderCreate()};
    std::int16_t pcm[kMaximumFramePcmValues] = {};
};

/// A frame of zeros behind a header.
std::vector<std::uint8_t> Frame(std::vector<std::uint8_t> header, std::size_t length) {
    header.resize(length);
    return header;
}

std::vector<std::uint8_t> Joined(std::vector<std::uint8_t> first, const std::vector<std::uint8_t>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// MPEG-1 layer III, 44.1 kHz, 128 kbit/s, stereo, no CRC word: 417 bytes.
const std::vector<std::uint8_t> kLayer3Header = {0xFF, 0xFB, 0x90, 0x00};
constexpr std::size_t kLayer3Bytes = 417;

TEST(DecoderInterface, ErrorTexts) {
    Fixture f({});
    EXPECT_STREQ(f.decoder->GetErrorText(0), "no error");
    EXPECT_STREQ(f.decoder->GetErrorText(1), "unexpected end of stream");
    EXPECT_STREQ(f.decoder->GetErrorText(2), "read error");
    EXPECT_STREQ(f.decoder->GetErrorText(3), "cannot process Fraunhofer-IIS MPEG 2.5 stream");
    EXPECT_STREQ(f.decoder->GetErrorText(4), "unknown error");
    EXPECT_STREQ(f.decoder->GetErrorText(5), "cannot process free-form streams");
    EXPECT_STREQ(f.decoder->GetErrorText(6), "sync error");
    EXPECT_STREQ(f.decoder->GetErrorText(7), "**Internal Error**");
    EXPECT_STREQ(f.decoder->GetErrorText(8), "not enough data to decode frame");
    EXPECT_STREQ(f.decoder->GetErrorText(-1), "unknown error");
    EXPECT_STREQ(f.decoder->GetIdentification(), "Velodec 1.4, based on Tarnlow 1.1.0 source");
}

TEST(DecoderInterface, ThreeOfFourHeaderBytesThrowEndOfStream) {
    EXPECT_EQ(Fixture({0xFF, 0xFB, 0x90}).ThrownByReadHeader(), AMP_ERR_END_OF_STREAM);
    EXPECT_EQ(Fixture({}).ThrownByReadHeader(), AMP_ERR_END_OF_STREAM);
}

TEST(DecoderInterface, CutCrcWordThrowsReadError) {
    EXPECT_EQ(Fixture({0xFF, 0xFA, 0x90, 0x00, 0x12}).ThrownByReadHeader(), AMP_ERR_READ);
}

TEST(DecoderInterface, CutSideInformationThrowsEndOfStream) {
    EXPECT_EQ(Fixture(Frame(kLayer3Header, 20)).ThrownByReadHeader(), AMP_ERR_END_OF_STREAM);
}

TEST(DecoderInterface, CutBodyThrowsEndOfStream) {
    Fixture f(Frame(kLayer3Header, kLayer3Bytes - 1));
    f.ReadHeader();
    EXPECT_THROW(f.decoder->DecodeFrame(), int);
}

TEST(DecoderInterface, NullSourceThrowsEndOfStream) {
    Fixture f({});
    f.decoder->SetBitsource(nullptr);
    EXPECT_EQ(f.ThrownByReadHeader(), AMP_ERR_END_OF_STREAM);
}

TEST(DecoderInterface, SyncSearchWithoutFrameEndsUnsynced) {
    Fixture f(std::vector<std::uint8_t>(1000, 0x11));
    EXPECT_EQ(f.ReadHeader().synced, 0);
}

TEST(DecoderInterface, ThreeBytesOfJunkAreOneShift) {
    Fixture f(Joined({0x01, 0x02, 0x03}, Frame(kLayer3Header, kLayer3Bytes)));
    EXPECT_EQ(f.ReadHeader().synced, 1);
    EXPECT_EQ(f.source.Position(), 3u + 4u + 32u);
}

TEST(DecoderInterface, EveryJunkLengthIsPassed) {
    for (std::size_t junk = 0; junk < 40; ++junk) {
        for (const int byte : {0x00, 0xFF}) {
            const std::vector<std::uint8_t> bytes(junk, static_cast<std::uint8_t>(byte));
            Fixture f(Joined(bytes, Frame(kLayer3Header, kLayer3Bytes)));
            ASSERT_EQ(f.ReadHeader().synced, 1) << junk;
            EXPECT_EQ(f.source.Position(), junk + 4 + 32);
        }
    }
}

TEST(DecoderInterface, RefusedHeadersAreJunk) {
    const std::vector<std::vector<std::uint8_t>> refused = {
        {0xFF, 0xFF, 0x90, 0x00}, // layer I
        {0xFF, 0xF9, 0x90, 0x00}, // reserved layer
        {0xFF, 0xFB, 0xF0, 0x00}, // bit-rate index 15
        {0xFF, 0xFB, 0x9C, 0x00}, // reserved sample rate
        {0xFF, 0xFB, 0x00, 0x00}, // free format
        {0xFF, 0x1B, 0x90, 0x00}, // no sync word
    };
    for (const auto& header : refused)
        EXPECT_EQ(Fixture(Frame(header, 2000)).ReadHeader().synced, 0)
            << int{header[1]} << ' ' << int{header[2]};
}

TEST(DecoderInterface, ReservedVersionReadsAsMpeg1) {
    Fixture f(Frame({0xFF, 0xEB, 0x90, 0x00}, kLayer3Bytes));
    const AMPFrameInfo info = f.ReadHeader();
    EXPECT_EQ(info.synced, 1);
    EXPECT_EQ(info.version, 1);
    EXPECT_EQ(info.sampleRate, 44100);
}

struct Length {
    std::vector<std::uint8_t> header;
    int bytes;
    int sampleRate;
    int pcmBytes;
};

TEST(DecoderInterface, FrameLengths) {
    const Length cases[] = {
        {{0xFF, 0xFD, 0xA4, 0x00}, 576, 48000, 4608},  // layer II, 192 kbit/s
        {{0xFF, 0xFD, 0x80, 0x00}, 417, 44100, 4608},  // layer II, 128 kbit/s
        {{0xFF, 0xF3, 0x80, 0x00}, 208, 22050, 2304},  // MPEG-2 layer III, 64 kbit/s
        {{0xFF, 0xF3, 0x82, 0xC0}, 209, 22050, 1152},  // the same, padded, single channel
        {{0xFF, 0xE3, 0x48, 0xC0}, 288, 8000, 1152},   // MPEG 2.5 layer III, 32 kbit/s
        {{0xFF, 0xE5, 0xEA, 0x00}, 2881, 8000, 4608},  // MPEG 2.5 layer II, 160 kbit/s, padded
        {{0xFF, 0xFB, 0xEA, 0x00}, 1441, 32000, 4608}, // layer III, 320 kbit/s, padded
    };
    for (const Length& expected : cases) {
        Fixture f(Frame(expected.header, static_cast<std::size_t>(expected.bytes)));
        const AMPFrameInfo info = f.ReadHeader();
        EXPECT_EQ(info.frameBytes, expected.bytes);
        EXPECT_EQ(info.sampleRate, expected.sampleRate);
        EXPECT_EQ(info.pcmBytes, expected.pcmBytes);
        EXPECT_EQ(f.decoder->GetOutputSize(), static_cast<unsigned>(expected.pcmBytes));
        EXPECT_TRUE(f.decoder->DecodeFrame());
        EXPECT_EQ(f.decoder->GetOutputSize(), static_cast<unsigned>(expected.pcmBytes / 2));
        EXPECT_EQ(f.source.Position(), static_cast<std::size_t>(expected.bytes));
    }
}

TEST(DecoderInterface, ResetKeepsTheHeaderLock) {
    const auto first = Frame(kLayer3Header, kLayer3Bytes);
    const std::vector<std::vector<std::uint8_t>> others = {
        Frame({0xFF, 0xFB, 0x94, 0x00}, 384), // 48 kHz
        Frame({0xFF, 0xFD, 0x90, 0x00}, 522), // layer II
        Frame({0xFF, 0xF3, 0x80, 0x00}, 208), // MPEG-2
    };
    for (const auto& other : others) {
        Fixture f(Joined(first, other));
        f.ReadHeader();
        f.decoder->SkipFrame();
        f.decoder->Reset();
        EXPECT_EQ(f.ReadHeader().synced, 0);
    }
}

TEST(DecoderInterface, ASearchThatRunsDryKeepsTheHeaderLock) {
    const auto otherRate = Frame({0xFF, 0xFB, 0x94, 0x00}, 384);
    Fixture f(Joined(Frame(kLayer3Header, kLayer3Bytes), otherRate));
    f.ReadHeader();
    f.decoder->SkipFrame();
    for (int search = 0; search < 2; ++search) {
        f.source.SetPosition(kLayer3Bytes);
        EXPECT_EQ(f.ReadHeader().synced, 0) << search;
    }
    f.source.SetPosition(0);
    EXPECT_EQ(f.ReadHeader().synced, 1);
}

TEST(DecoderInterface, LockDoesNotCompareTheMpeg25Flag) {
    Fixture f(Joined(Frame({0xFF, 0xF3, 0x80, 0x00}, 208), Frame({0xFF, 0xE3, 0x80, 0x00}, 417)));
    f.ReadHeader();
    f.decoder->SkipFrame();
    const AMPFrameInfo info = f.ReadHeader();
    EXPECT_EQ(info.synced, 1);
    EXPECT_EQ(info.sampleRate, 11025);
}

TEST(DecoderInterface, LayerIFileNeverSyncs) {
    std::vector<std::uint8_t> stream;
    for (int i = 0; i < 20; ++i)
        stream = Joined(stream, Frame({0xFF, 0xFF, 0x90, 0x00}, 312));
    EXPECT_EQ(Fixture(stream).ReadHeader().synced, 0);
}

TEST(DecoderInterface, FirstFrameThatReachesBackBeyondTheReservoirDoesNotFail) {
    auto frame = Frame(kLayer3Header, kLayer3Bytes);
    frame[4] = 0xFF; // main_data_begin 511
    frame[5] = 0x80;
    Fixture f(frame);
    f.ReadHeader();
    EXPECT_TRUE(f.decoder->DecodeFrame());
    EXPECT_EQ(f.decoder->GetOutputSize(), 2304u);
}

TEST(DecoderInterface, WhatWasDecodedBeforeAResetDoesNotMatter) {
    StreamOptions options;
    options.frames = 6;
    const auto stream = test::bitstream::WriteStream(options);
    const auto fresh = test::DecodeStream(stream.bytes).pcm;

    Fixture f(stream.bytes);
    for (int i = 0; i < 4; ++i) {
        f.ReadHeader();
        f.decoder->DecodeFrame();
    }
    f.source.SetPosition(0);
    f.decoder->Reset();
    std::vector<std::int16_t> again;
    for (int i = 0; i < options.frames; ++i) {
        f.ReadHeader();
        f.decoder->DecodeFrame();
        again.insert(again.end(), f.pcm, f.pcm + f.decoder->GetOutputSize());
    }
    EXPECT_EQ(again, fresh);
}

TEST(DecoderInterface, SkippedFramesFillTheReservoir) {
    StreamOptions options;
    options.frames = 12;
    options.layer3.reservoir = test::bitstream::ReservoirUse::kFull;
    const auto stream = test::bitstream::WriteStream(options);
    const auto whole = test::DecodeStream(stream.bytes).pcm;
    Fixture f(stream.bytes);
    for (int i = 0; i < 9; ++i) {
        f.ReadHeader();
        f.decoder->SkipFrame();
    }
    for (int i = 9; i < 11; ++i) {
        f.ReadHeader();
        f.decoder->DecodeFrame();
    }
    EXPECT_EQ(std::vector<std::int16_t>(f.pcm, f.pcm + 2304),
              std::vector<std::int16_t>(whole.begin() + 10 * 2304, whole.begin() + 11 * 2304));
}

TEST(DecoderInterface, DecodeWithoutASyncedHeaderGivesNothing) {
    Fixture f(std::vector<std::uint8_t>(100, 0));
    f.ReadHeader();
    EXPECT_FALSE(f.decoder->DecodeFrame());
    EXPECT_EQ(f.decoder->GetOutputSize(), 0u);
}

} // namespace
