#include "trnmediadet/media_info.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

TEST(MediaInfo, DefaultsSayNothingWasFound) {
    const KW_MEDIA_BASE_INFO_ST info;
    EXPECT_EQ(info.classIdentifier, 2049);
    EXPECT_EQ(info.audioCodec, 1);
    EXPECT_EQ(info.duration, 0);
    EXPECT_EQ(info.audioFormat.nChannels, 0);
}

TEST(MediaInfo, ConversionCarriesEveryField) {
    KW_MEDIA_BASE_INFO_ST first;
    first.filePath = L"日本.mp3";
    first.fileSize = 0x123456789;
    first.classIdentifier = 2323;
    first.audioCodec = 1043;
    first.streamPresent = 1;
    first.audioPresent = 2;
    first.duration = -5;
    first.audioFormat.wFormatTag = 85;
    first.audioFormat.nChannels = 2;
    first.audioFormat.nSamplesPerSec = 44100;
    first.audioFormat.nAvgBytesPerSec = 176400;
    first.audioFormat.nBlockAlign = 4;
    first.audioFormat.wBitsPerSample = 16;
    first.audioFormat.cbSize = 18;
    TRN_MEDIA_INFO2 second;
    TRN_MediaInfoTransformer transformer;
    ASSERT_EQ(transformer.Info1TransToInfo2(&first, &second), 1);
    EXPECT_EQ(second.filePath, first.filePath);
    EXPECT_EQ(second.fileSize, first.fileSize);
    EXPECT_EQ(second.classIdentifier, 2323);
    EXPECT_EQ(second.audioCodec, 1043);
    EXPECT_EQ(second.streamPresent, 1);
    EXPECT_EQ(second.audioPresent, 2);
    EXPECT_EQ(second.duration, -5);
    EXPECT_EQ(std::memcmp(&second.audioFormat, &first.audioFormat, sizeof(WAVEFORMATEX)), 0);
}

TEST(MediaInfo, NullsAreRefused) {
    KW_MEDIA_BASE_INFO_ST first;
    TRN_MEDIA_INFO2 second;
    second.duration = 7;
    TRN_MediaInfoTransformer transformer;
    EXPECT_EQ(transformer.Info1TransToInfo2(nullptr, &second), 0);
    EXPECT_EQ(transformer.Info1TransToInfo2(&first, nullptr), 0);
    EXPECT_EQ(second.duration, 7);
}

TEST(WaveFormat, IsPacked) {
    EXPECT_EQ(sizeof(WAVEFORMATEX), 18u);
    const WAVEFORMATEX format = {1, 2, 44100, 176400, 4, 16, 0x1234};
    std::uint16_t last = 0;
    std::memcpy(&last, reinterpret_cast<const char*>(&format) + 16, sizeof last);
    EXPECT_EQ(last, 0x1234);
}

} // namespace
