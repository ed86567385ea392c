#include "index/builder/index_model.h"

#include <algorithm>
#include <array>
#include <optional>

namespace test {

namespace {

using Window = std::array<std::uint8_t, 4>;

constexpr std::uint32_t kHeaderBytes = 28;

// ISO/IEC 11172-3, 2.4.2.3 and ISO/IEC 13818-3, 2.4.2.3; kbit/s by index.
constexpr std::array<std::int32_t, 15> kLayer2 = {0,   32,  48,  56,  64,  80,  96, 112,
                                                  128, 160, 192, 224, 256, 320, 384};
constexpr std::array<std::int32_t, 15> kLayer3 = {0,   32,  40,  48,  56,  64,  80, 96,
                                                  112, 128, 160, 192, 224, 256, 320};
constexpr std::array<std::int32_t, 15> kLowRates = {0,  8,  16, 24,  32,  40,  48, 56,
                                                    64, 80, 96, 112, 128, 144, 160};

/// A file that is read from the current position.
class Stream {
public:
    explicit Stream(const Bytes& bytes) : bytes_(bytes) {}

    void SeekTo(std::size_t position) { position_ = position; }
    std::size_t Position() const { return position_; }

    std::size_t Read(std::uint8_t* destination, std::size_t count) {
        std::size_t read = 0;
        for (; read < count && position_ < bytes_.size(); ++read)
            destination[read] = bytes_[position_++];
        return read;
    }

private:
    const Bytes& bytes_;
    std::size_t position_ = 0;
};

bool Accepts(const Window& b) {
    const int layerBits = b[1] >> 1 & 3;
    const int rateIndex = b[2] >> 4;
    return b[0] == 0xFF && b[1] >= 0xE0 && layerBits != 0 && layerBits != 3 && rateIndex != 0 &&
           rateIndex != 15 && (b[2] >> 2 & 3) != 3;
}

std::size_t BytesToDrop(const Window& b) {
    if (b[1] == 0xFF && b[2] >= 0xF0)
        return 1;
    if (b[2] == 0xFF && b[3] >= 0xF0)
        return 2;
    return b[3] == 0xFF ? 3 : 4;
}

std::optional<Window> NextHeader(Stream& stream) {
    Window window = {};
    if (stream.Read(window.data(), 4) < 4)
        return std::nullopt;
    for (std::size_t skipped = 0; !Accepts(window);) {
        if (skipped >= 4096)
            return std::nullopt;
        const std::size_t drop = BytesToDrop(window);
        std::copy(window.begin() + static_cast<std::ptrdiff_t>(drop), window.end(), window.begin());
        if (stream.Read(window.data() + 4 - drop, drop) < drop)
            return std::nullopt;
        skipped += drop;
    }
    return window;
}

struct Format {
    std::int32_t layer, version, channels, kilobits, sampleRate, frameBytes, samples;
};

Format Decode(const Window& b) {
    const bool isLow = (b[1] & 8) == 0;
    const std::int32_t layer = 4 - (b[1] >> 1 & 3);
    const auto& rates = isLow ? kLowRates : layer == 2 ? kLayer2 : kLayer3;
    constexpr std::array<std::int32_t, 3> kSampleRates = {44100, 48000, 32000};
    std::int32_t sampleRate = kSampleRates[b[2] >> 2 & 3];
    if (isLow)
        sampleRate /= 2;
    if ((b[1] & 0x18) == 0)
        sampleRate /= 2;
    const std::int32_t kilobits = rates[b[2] >> 4];
    const std::int32_t padding = (b[2] & 2) != 0 ? 1 : 0;
    return {.layer = layer,
            .version = isLow ? 2 : 1,
            .channels = b[3] >> 6 == 3 ? 1 : 2,
            .kilobits = kilobits,
            .sampleRate = sampleRate,
            .frameBytes = kilobits * (isLow ? 72000 : 144000) / sampleRate + padding,
            .samples = layer == 3 && isLow ? 576 : 1152};
}

std::optional<std::size_t> BytesToSkip(const Bytes& media) {
    const auto at = [&](std::size_t i) { return i < media.size() ? std::size_t{media[i]} : 0; };
    for (std::size_t p = 0; p <= 60; p += 2)
        if (at(p) == 'I' && at(p + 1) == 'D' && at(p + 2) == '3') {
            const std::size_t size = (at(p + 6) << 21) + (at(p + 7) << 14) + (at(p + 8) << 7) + at(p + 9);
            return size >= 268435456 ? std::nullopt : std::optional(size + 10);
        }
    return 0;
}

void Put(Bytes& bytes, std::size_t offset, std::size_t width, std::size_t value) {
    for (std::size_t i = 0; i < width; ++i)
        bytes[offset + i] = static_cast<std::uint8_t>(value >> 8 * i);
}

void PutFormat(Bytes& index, const Format& format) {
    Put(index, 8, 1, static_cast<std::size_t>(format.layer));
    Put(index, 9, 1, static_cast<std::size_t>(format.version));
    Put(index, 10, 2, static_cast<std::size_t>(format.channels));
    Put(index, 12, 4, static_cast<std::size_t>(format.kilobits * 1000));
    Put(index, 16, 4, static_cast<std::size_t>(format.sampleRate));
    Put(index, 20, 2, 16);
    Put(index, 22, 2, static_cast<std::size_t>(format.frameBytes));
    Put(index, 24, 4, static_cast<std::size_t>(format.samples));
}

void Scan(Stream& stream, std::size_t size, IndexModel& model) {
    for (;;) {
        const auto header = NextHeader(stream);
        if (!header) {
            model.percent = 100;
            return;
        }
        const std::size_t offset = stream.Position() - 4;
        const auto length = static_cast<std::size_t>(Decode(*header).frameBytes);
        model.index.resize(model.index.size() + 8);
        Put(model.index, model.index.size() - 8, 4, offset);
        Put(model.index, model.index.size() - 4, 4, length);
        ++model.framesIndexed;
        const auto end = static_cast<std::uint32_t>(offset + length);
        model.percent = end * 100 / static_cast<std::uint32_t>(size);
        if (end >= size)
            return;
        stream.SeekTo(end);
    }
}

} // namespace

IndexModel ModelOfIndexing(const Bytes& media) {
    IndexModel model;
    model.index = Bytes(kHeaderBytes);
    Stream stream(media);
    const auto skip = BytesToSkip(media);
    if (!skip)
        return model;
    stream.SeekTo(*skip);
    const auto first = NextHeader(stream);
    if (!first)
        return model;
    model.opens = true;
    const Format format = Decode(*first);
    stream.SeekTo(stream.Position() - 4 + static_cast<std::size_t>(format.frameBytes));
    Scan(stream, media.size(), model);
    Put(model.index, 0, 4, model.framesIndexed);
    Put(model.index, 4, 4, media.size());
    PutFormat(model.index, format);
    return model;
}

} // namespace test
