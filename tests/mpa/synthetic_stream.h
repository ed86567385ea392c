/// Streams of frames without sound, for tests that look at headers only.
#pragma once

#include "mpa/frame_header.h"
#include "mpa/header_source.h"
#include "support/test_files.h"

#include <cstdint>
#include <functional>
#include <string_view>

namespace test {

inline constexpr int kMpeg1 = 3;
inline constexpr int kMpeg2 = 2;
inline constexpr int kReservedVersion = 1;
inline constexpr int kMpeg25 = 0;

inline constexpr int kStereo = 0;
inline constexpr int kJointStereo = 1;
inline constexpr int kMono = 3;

/// The fields of a header as the standard numbers them; by default MPEG-1 layer III, 128 kbit/s, 44100 Hz,
/// stereo, which is 417 bytes long.
struct FrameSpec {
    int version = kMpeg1; ///< the two version bits
    int layer = 3;
    int bitRateIndex = 9;
    int sampleRateIndex = 0;
    bool isPadded = false;
    int mode = kStereo;
    bool hasCrc = false;
};

trnmpa::FrameHeaderBytes HeaderOf(const FrameSpec& spec);

/// Appends a header and zeros, `size` bytes in all.
void AppendFrame(Bytes& stream, const FrameSpec& spec, std::size_t size);

/// `count` frames of one length.
Bytes Frames(const FrameSpec& spec, std::size_t size, int count);

/// `count` frames of MPEG-1 layer III, 128 kbit/s, 44100 Hz, padded as an encoder does: frame n begins at
/// n * 20480 / 49, truncated.
Bytes PaddedFrames(int count, int mode = kStereo);

void Append(Bytes& stream, const Bytes& more);
void PutText(Bytes& stream, std::size_t offset, std::string_view text);

/// The ten bytes of a tag's header.
Bytes TagHeader(std::uint8_t s0, std::uint8_t s1, std::uint8_t s2, std::uint8_t s3);

/// Bytes in memory. Counts what is read.
class MemorySource final : public trnmpa::HeaderSource {
public:
    explicit MemorySource(Bytes bytes) : bytes_(std::move(bytes)) {}

    std::size_t Read(std::span<std::uint8_t> destination) override;
    std::int64_t Position() override { return position_; }
    bool SetPosition(std::int64_t position) override;

    std::size_t BytesRead() const { return bytesRead_; }

private:
    Bytes bytes_;
    std::int64_t position_ = 0;
    std::size_t bytesRead_ = 0;
};

/// A file of any size whose bytes come from a function of their position.
class ComputedSource final : public trnmpa::HeaderSource {
public:
    ComputedSource(std::int64_t length, std::function<std::uint8_t(std::int64_t)> byteAt)
        : length_(length), byteAt_(std::move(byteAt)) {}

    std::size_t Read(std::span<std::uint8_t> destination) override;
    std::int64_t Position() override { return position_; }
    bool SetPosition(std::int64_t position) override;

private:
    std::int64_t length_;
    std::function<std::uint8_t(std::int64_t)> byteAt_;
    std::int64_t position_ = 0;
};

} // namespace test
