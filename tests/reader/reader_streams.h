/// Streams and index files for tests of the sample reader, and the PCM that it must deliver of them.
#pragma once

#include "index/index_format.h"
#include "support/bitstream/stream.h"
#include "support/loaded_module.h"
#include "support/test_files.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace test {

/// What the built-in decoder's output begins with, in samples; left out of layer III streams without index.
inline constexpr int kDecoderDelay = 1100;

/// MPEG-1 layer III, stereo, 44100 Hz, 128 kbit/s, every frame 417 bytes and reaching back as far as it may.
bitstream::StreamOptions SteadyOptions(int frames = 20);
bitstream::Stream SteadyStream(int frames = 20);

/// MPEG-1 layer III, stereo, 44100 Hz, from 32 to 320 kbit/s.
bitstream::Stream ChangingStream(int frames = 40);

/// MPEG-1 layer II, stereo, 48000 Hz, 192 kbit/s.
bitstream::Stream Layer2Stream(int frames = 20);

/// The decoder's output for frames that begin with these bytes, as the sample reader must hand it out: layer
/// III doubled and kept within -32767 to 32767, the first `skippedSamples` (per channel) left out.
Pcm Delivered(std::span<const std::uint8_t> frames, int skippedSamples);

/// The same from frame `first` of the stream on.
Pcm DeliveredFrom(const bitstream::Stream& stream, std::size_t first, int skippedSamples);

/// A frame like the stream's first one that holds silence, and `text` at offset 36.
Bytes DescribingFrame(const bitstream::Stream& stream, std::string_view text);

/// An index file's content.
struct Index {
    trnmpa::MpaIndexHeader header;
    std::vector<trnmpa::MpaIndexEntry> entries;

    Bytes ToBytes() const;
};

/// The index of a stream that begins at `offset` of its file: every frame but the first has an entry.
Index IndexOf(const bitstream::Stream& stream, std::size_t offset = 0);

Bytes Joined(std::initializer_list<Bytes> parts);

} // namespace test
