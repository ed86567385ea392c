/// The probe of files that have an index beside them.
#include "mpa/file_probe.h"

#include "mpa/synthetic_stream.h"
#include "trcommontoolsr/file_access.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <limits>

using namespace trnmpa;
using test::Bytes;

namespace {

/// The header's fields that the probe reads.
struct IndexFields {
    std::uint32_t frameCount = 1000;
    std::uint8_t layer = 3;
    std::uint16_t channels = 2;
    std::uint32_t bitRate = 128000;
    std::uint32_t sampleRate = 44100;
    std::uint16_t bits = 16;
    std::uint32_t samplesPerFrame = 1152;
};

void Put(Bytes& bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

Bytes IndexOf(const IndexFields& fields) {
    Bytes bytes;
    Put(bytes, fields.frameCount, 4);
    Put(bytes, 0xDEADBEEF, 4);
    Put(bytes, fields.layer, 1);
    Put(bytes, 1, 1);
    Put(bytes, fields.channels, 2);
    Put(bytes, fields.bitRate, 4);
    Put(bytes, fields.sampleRate, 4);
    Put(bytes, fields.bits, 2);
    Put(bytes, 417, 2);
    Put(bytes, fields.samplesPerFrame, 4);
    return bytes;
}

class IndexedFileProbe : public testing::Test {
protected:
    std::int32_t Parse(const Bytes& media, const Bytes& index) {
        folder_.Add("stream.mp3.idx", index);
        return probe_.ParseFile(test::Wide(folder_.Add("stream.mp3", media)));
    }
    std::int32_t Parse(const IndexFields& fields) { return Parse(Bytes(100, 0), IndexOf(fields)); }

    const KW_MEDIA_BASE_INFO_ST& Description() const { return probe_.Description(); }

    test::ScratchFolder folder_;
    CMPGAudioFileBufferReader probe_;
};

} // namespace

TEST_F(IndexedFileProbe, TheIndexAloneDescribesADamagedFile) {
    ASSERT_EQ(Parse(Bytes(12345, 0), IndexOf({})), kProbeDescribed);
    EXPECT_TRUE(probe_.IsVbr());
    EXPECT_EQ(Description().fileSize, 12345);
    EXPECT_EQ(Description().classIdentifier, 2323);
    EXPECT_EQ(Description().audioCodec, 1043);
    EXPECT_EQ(Description().duration, 261224489) << "1000 * 1152 / 44100 s";
    EXPECT_EQ(Description().audioPresent, 1);
    EXPECT_EQ(Description().streamPresent, 0);
    EXPECT_EQ(Description().filePath, L"");
    const WAVEFORMATEX& format = Description().audioFormat;
    EXPECT_EQ(format.wFormatTag, 85);
    EXPECT_EQ(format.nChannels, 2);
    EXPECT_EQ(format.nSamplesPerSec, 44100u);
    EXPECT_EQ(format.nAvgBytesPerSec, 16000u);
    EXPECT_EQ(format.nBlockAlign, 4);
    EXPECT_EQ(format.wBitsPerSample, 16);
}

TEST_F(IndexedFileProbe, LayersHaveTheirCodes) {
    for (std::uint8_t layer = 1; layer <= 3; ++layer) {
        ASSERT_EQ(Parse({.layer = layer}), kProbeDescribed);
        EXPECT_EQ(Description().classIdentifier, 2320 + layer);
        EXPECT_EQ(Description().audioCodec, 1040 + layer);
    }
}

TEST_F(IndexedFileProbe, OtherLayersLeaveTheDefaults) {
    for (const int layer : {0, 4, 9, 255}) {
        ASSERT_EQ(Parse({.layer = static_cast<std::uint8_t>(layer)}), kProbeDescribed);
        EXPECT_EQ(Description().classIdentifier, 2049);
        EXPECT_EQ(Description().audioCodec, 1);
    }
}

TEST_F(IndexedFileProbe, SampleRateZeroGivesNoDuration) {
    ASSERT_EQ(Parse({.sampleRate = 0}), kProbeDescribed);
    EXPECT_EQ(Description().duration, 0);
    EXPECT_EQ(Description().audioFormat.nSamplesPerSec, 0u);
}

TEST_F(IndexedFileProbe, LargestNumbersSaturate) {
    constexpr auto kMost32 = std::numeric_limits<std::uint32_t>::max();
    ASSERT_EQ(Parse({.frameCount = kMost32,
                     .channels = 0xFFFF,
                     .bitRate = kMost32,
                     .sampleRate = 1,
                     .bits = 0xFFFF,
                     .samplesPerFrame = kMost32}),
              kProbeDescribed);
    EXPECT_EQ(Description().duration, std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(Description().audioFormat.nAvgBytesPerSec, kMost32 / 8);
    EXPECT_EQ(Description().audioFormat.nBlockAlign, (0xFFFFu * 0xFFFFu / 8) % 65536);
}

TEST_F(IndexedFileProbe, ManySamplesPerFrameFit) {
    ASSERT_EQ(Parse({.frameCount = 1, .samplesPerFrame = 0xFFFFFFFF}), kProbeDescribed);
    EXPECT_NEAR(static_cast<double>(Description().duration), 4294967295.0 / 44100 * 1e7, 1.0);
}

TEST_F(IndexedFileProbe, CutOffHeadersReadAsZeros) {
    const Bytes whole = IndexOf({});
    for (const std::size_t size : {0u, 1u, 4u, 27u, 28u, 30u}) {
        Bytes index = whole;
        index.resize(size, 0x77);
        CMPGAudioFileBufferReader probe;
        folder_.Add("stream.mp3.idx", index);
        ASSERT_EQ(probe.ParseFile(test::Wide(folder_.Add("stream.mp3", Bytes(10, 0)))), kProbeDescribed)
            << size;
        EXPECT_EQ(probe.Description().audioFormat.nSamplesPerSec, size >= 27 ? 44100u : 0u) << size;
        // The bytes of 1152 are both within 27; only zeros are cut off then.
        EXPECT_EQ(probe.Description().duration, size >= 27 ? 261224489 : 0) << size;
        EXPECT_EQ(probe.Description().classIdentifier, size >= 27 ? 2323 : 2049) << size;
        EXPECT_EQ(probe.Description().audioFormat.wFormatTag, 85);
    }
}

TEST_F(IndexedFileProbe, TheMediaFileMustBeThere) {
    folder_.Add("gone.mp3.idx", IndexOf({}));
    EXPECT_EQ(probe_.ParseFile(test::Wide(folder_.Path() / "gone.mp3")), kProbeUnusable);
    EXPECT_EQ(Description().audioPresent, 0);
}

TEST_F(IndexedFileProbe, AFolderOfThatNameIsNoIndex) {
    std::filesystem::create_directory(folder_.Path() / "stream.mp3.idx");
    ASSERT_EQ(probe_.ParseFile(test::Wide(folder_.Add("stream.mp3", test::PaddedFrames(200)))),
              kProbeDescribed);
    EXPECT_FALSE(probe_.IsVbr());
}

TEST_F(IndexedFileProbe, AnIndexThatCannotBeOpenedFails) {
    // A device exists, is no folder, and is refused as a file.
    std::error_code error;
    std::filesystem::create_symlink("/dev/null", folder_.Path() / "stream.mp3.idx", error);
    if (error || std::filesystem::status("/dev/null", error).type() != std::filesystem::file_type::character)
        GTEST_SKIP() << "this system cannot make a link to a device";
    const Bytes media = test::PaddedFrames(200);
    EXPECT_EQ(probe_.ParseFile(test::Wide(folder_.Add("stream.mp3", media))), kProbeUnusable);
    EXPECT_EQ(Description().fileSize, std::ssize(media));
    EXPECT_EQ(Description().classIdentifier, 2049);
    EXPECT_EQ(Description().audioPresent, 0);
}

TEST_F(IndexedFileProbe, StoragePathsHaveIndexesToo) {
    folder_.Add("stream.mp3", Bytes(100, 0));
    folder_.Add("stream.mp3.idx", IndexOf({}));
    TRCT_FileAccess::SetStorageFolder(test::Wide(folder_.Path()));
    const std::int32_t result = probe_.ParseFile(L"dqs:\\stream.mp3");
    TRCT_FileAccess::SetStorageFolder(L"");
    EXPECT_EQ(result, kProbeDescribed);
    EXPECT_EQ(Description().duration, 261224489);
}
