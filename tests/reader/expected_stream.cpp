#include "reader/expected_stream.h"

#include "index/builder/file_index_writer.h"
#include "reader/foreign_bytes.h"
#include "reader/reader_streams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <string>

namespace test {

namespace {

using bitstream::FrameRecord;
using bitstream::Stream;

int SamplesPerFrame(const FrameRecord& frame) {
    return frame.header.layer == 3 && frame.header.lsf ? 576 : 1152;
}

/// The decoder's PCM of the frames from `firstFrame` on, back to back, without the first `skipped` samples.
ExpectedStream Expect(const Stream& file, std::size_t firstFrame, std::int64_t skipped) {
    const FrameRecord& first = file.frames.front();
    ExpectedStream expected;
    expected.channels = first.header.channels;
    expected.samplesPerFrame = SamplesPerFrame(first);
    expected.skippedSamples = skipped;
    expected.pcm = Delivered(FramesAlone(file, firstFrame), static_cast<int>(skipped));
    expected.samples = static_cast<std::int64_t>(expected.pcm.size()) / expected.channels;
    return expected;
}

std::string NextName() {
    static std::atomic<int> counter = 0;
    return "stream" + std::to_string(counter++) + ".mp3";
}

std::int64_t EstimatedOffset(const Stream& stream, bool isConstant, std::size_t frame) {
    const FrameRecord& first = stream.frames.front();
    if (isConstant)
        return static_cast<std::int64_t>(frame) * first.length;
    const double bytes = static_cast<double>(SamplesPerFrame(first)) / first.header.sampleRate *
                         static_cast<double>(frame) * (first.header.kbps * 1000) / 8;
    return std::max<std::int64_t>(static_cast<std::int64_t>(bytes) - 1, 0);
}

/// The test at the middle of the file, on which the choice of arithmetic rests.
bool IsTakenAsConstant(const Stream& stream) {
    const FrameRecord& first = stream.frames.front();
    if (first.header.sampleRate == 48000 || first.header.sampleRate == 24000)
        return true;
    const auto length = static_cast<std::size_t>(first.length);
    const std::size_t middle = stream.bytes.size() / length / 2 * length;
    return stream.bytes[middle] == stream.bytes[0] &&
           (stream.bytes[middle + 1] & 0xFE) == (stream.bytes[1] & 0xFE) &&
           (stream.bytes[middle + 2] & 0xFC) == (stream.bytes[2] & 0xFC);
}

} // namespace

Pcm ExpectedStream::Answer(std::int64_t start, std::uint32_t count) const {
    Pcm answer(static_cast<std::size_t>(count) * static_cast<std::size_t>(channels));
    if (start <= samples - static_cast<std::int64_t>(count))
        std::copy_n(pcm.begin() + static_cast<std::ptrdiff_t>(start * channels), answer.size(),
                    answer.begin());
    return answer;
}

Bytes BuildIndex(const std::filesystem::path& media) {
    trnmpa::KwMpaFileIndexWriter builder;
    PROGRESS_INFO progress = {};
    const bool built = builder.Initialize() == 1 && builder.SetInputFile(Wide(media)) == 1 &&
                       builder.CreateFileIndex() == 1 && builder.GetFileIdxingProgress(progress) == 1;
    if (!built || progress.state != TRN_INDEX_FINISHED)
        throw std::runtime_error("no index was built of " + media.string());
    auto index = media;
    index += ".idx";
    return ReadFile(index);
}

ExpectedStream AddIndexedStream(const ScratchFolder& folder, const Stream& file) {
    ExpectedStream expected = Expect(file, 1, 0);
    expected.path = folder.Add(NextName(), file.bytes);
    EXPECT_EQ(BuildIndex(expected.path), IndexOf(file).ToBytes()) << "another list of frames";
    return expected;
}

ExpectedStream AddPlainStream(const ScratchFolder& folder, const Stream& file) {
    ExpectedStream expected = Expect(file, 0, file.frames.front().header.layer == 3 ? kDecoderDelay : 0);
    expected.path = folder.Add(NextName(), file.bytes);
    return expected;
}

bool IsFoundByArithmetic(const Stream& stream) {
    const bool isConstant = IsTakenAsConstant(stream);
    for (std::size_t n = 1; n < stream.frames.size(); ++n) {
        const std::int64_t offset = EstimatedOffset(stream, isConstant, n);
        if (offset <= static_cast<std::int64_t>(stream.frames[n - 1].offset) ||
            offset > static_cast<std::int64_t>(stream.frames[n].offset))
            return false;
    }
    return true;
}

} // namespace test
