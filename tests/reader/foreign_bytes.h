/// Media files that hold more than the frames of one stream.
#pragma once

#include "support/bitstream/stream.h"
#include "support/test_files.h"

#include <cstdint>
#include <random>

namespace test {

/// Junk in which no search stops: no byte pair of it looks like a sync word, whatever follows it. Without
/// 0xFF altogether unless `withFF`: a search steps over junk four bytes at a time until it meets that byte.
Bytes Junk(std::size_t count, std::mt19937_64& random, bool withFF);

/// An ID3v2 tag of `bodyBytes`, most of it bytes that look like frames.
Bytes TagLookingLikeFrames(std::size_t bodyBytes, std::mt19937_64& random);

/// What a media file holds besides the stream.
struct Surroundings {
    bool tag = false;       ///< an ID3v2 tag in front
    bool infoFrame = false; ///< an encoder's frame before the first one
    bool junk = false;      ///< before and between frames, up to 4096 bytes at a place, and at the end
    std::uint64_t seed = 1;
};

/// The file that holds all this, as a stream whose records tell where its frames lie. Junk is of a kind and
/// length that index and decoder both pass over: in MPEG 2.5 multiples of 4 bytes without 0xFF.
bitstream::Stream Surround(const bitstream::Stream& stream, const Surroundings& surroundings);

/// The stream with `bytes` between its frames `frame - 1` and `frame`.
bitstream::Stream WithBytesBefore(const bitstream::Stream& stream, std::size_t frame, const Bytes& bytes);

/// The frames' own bytes from frame `first` on.
Bytes FramesAlone(const bitstream::Stream& stream, std::size_t first);

} // namespace test
