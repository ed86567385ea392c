#include "support/bitstream/stream.h"

#include "support/bitstream/layer2_writer.h"
#include "support/bitstream/layer3_writer.h"

namespace test::bitstream {

namespace {

void FlipBits(std::vector<std::uint8_t>& bytes, std::size_t first, std::size_t count, int perTenFrames,
              Random& random) {
    const int flips = perTenFrames / 10 + (random.Below(10) < perTenFrames % 10 ? 1 : 0);
    for (int i = 0; i < flips && count > 0; ++i) {
        const auto bit = static_cast<std::size_t>(random.Below(static_cast<int>(8 * count)));
        std::uint8_t& byte = bytes[first + bit / 8];
        byte = static_cast<std::uint8_t>(byte ^ (0x80U >> (bit % 8)));
    }
}

} // namespace

Stream WriteStream(const StreamOptions& options) {
    Random random(options.seed);
    HeaderMaker headers(options);
    if (options.layer == 3) {
        Layer3Writer writer(options);
        for (int frame = 0; frame < options.frames; ++frame)
            writer.Add(headers.Next(random), random);
        return writer.Finish(random);
    }
    Stream stream;
    for (int frame = 0; frame < options.frames; ++frame)
        AddLayer2Frame(options, headers.Next(random), random, stream);
    return stream;
}

std::vector<std::uint8_t> Spoil(const Stream& stream, const Damage& damage, std::uint64_t seed) {
    Random random(seed);
    std::vector<std::uint8_t> bytes = stream.bytes;
    for (const FrameRecord& frame : stream.frames) {
        const std::size_t sideInfo = frame.offset + 4 + (frame.header.crc ? 2 : 0);
        const auto sideInfoBytes = static_cast<std::size_t>(frame.sideInfoBytes);
        const std::size_t body = sideInfo + sideInfoBytes;
        const std::size_t end = frame.offset + static_cast<std::size_t>(frame.length);
        FlipBits(bytes, sideInfo, sideInfoBytes, damage.sideInfoBitsPerTenFrames, random);
        FlipBits(bytes, body, end - body, damage.bodyBitsPerTenFrames, random);
    }
    return bytes;
}

} // namespace test::bitstream
