#include "mpatool/selftest/streams.h"

#include "mpatool/selftest_streams.h"
#include "trnmpafileread/plugin.h"

#include <cstdio>

namespace mpatool {

namespace {

constexpr std::int32_t kLayer2 = TRN_CLASS_MPEG_AUDIO_LAYER_2;
constexpr std::int32_t kLayer3 = TRN_CLASS_MPEG_AUDIO_LAYER_3;

constexpr SelftestStream kStreams[] = {
    {L"layer3.mp3", kMusicLayer3, kLayer3, 44'100, 2, 40'000, "f35cd23238af8b15"},
    {L"layer2.mp2", kMusicLayer2, kLayer2, 44'100, 2, 25'000, "5ece3fd6d417e713"},
};

constexpr SelftestStream kIndexed = {L"indexed.mp3", kMusicLayer3,      kLayer3, 44'100, 2,
                                     40'000,         "3f7506c98f31844a"};

/// Layer III frames of zeros, which decode to silence: MPEG-1, 44100 Hz, stereo, without padding.
void AddSilence(std::string& stream, int bitRateIndex, std::size_t frameBytes, int frames) {
    for (int i = 0; i < frames; ++i) {
        stream += {'\xFF', '\xFB', static_cast<char>(bitRateIndex << 4), '\0'};
        stream.append(frameBytes - 4, '\0');
    }
}

} // namespace

std::span<const SelftestStream> SelftestStreams() {
    return kStreams;
}

const SelftestStream& IndexedStream() {
    return kIndexed;
}

std::string VariableStream() {
    constexpr int kIndexOf128 = 9;
    constexpr std::size_t kBytesAt128 = 417;
    constexpr int kIndexOf64 = 5;
    constexpr std::size_t kBytesAt64 = 208;
    std::string stream;
    AddSilence(stream, kIndexOf128, kBytesAt128, 20);
    AddSilence(stream, kIndexOf64, kBytesAt64, 60);
    return stream;
}

void PcmDigest::Add(std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes)
        hash_ = (hash_ ^ byte) * 1099511628211u;
}

std::string PcmDigest::Text() const {
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash_));
    return text;
}

} // namespace mpatool
