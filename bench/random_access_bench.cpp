// random_access_bench FILE: random requests on FILE with its index, by the sample reader, as the bare decoder
// calls that such a request needs, and by libmpg123; prints a Markdown table.

#include "decoder/decoder_interface.h"
#include "fileio/frame_buffer_reader.h"
#include "index/index_format.h"
#include "os/paths.h"
#include "reader/preroll.h"
#include "reader/sample_reader.h"

#include <mpg123.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kRequests = 1000;
constexpr std::size_t kTurn = 100;
constexpr std::uint32_t kSamples = 1000;

void Require(bool condition, const char* what) {
    if (!condition)
        throw std::runtime_error(what);
}

class SampleReader {
public:
    explicit SampleReader(const std::wstring& path) {
        Require(reader_.Initialize() == 1 && reader_.SetInputFile(path) == 1 &&
                    reader_.GetStreamInfo(&info_) == 1,
                "the sample reader cannot open the file");
    }
    void Request(std::int64_t start) {
        AudioReaderDataIn request;
        request.startSample = start;
        request.sampleCount = kSamples;
        unsigned char* data = nullptr;
        std::int32_t size = 0;
        Require(reader_.GetSamples(request, data, size, nullptr) == 1, "the sample reader failed");
    }

private:
    trnmpa::KwMpAudioReader2 reader_;
    KW_MEDIA_BASE_INFO_ST info_;
};

/// The decoder calls of a request, and nothing else.
class BareDecoder {
public:
    explicit BareDecoder(const std::wstring& path) : decoder_(AMPDecoderCreate()) {
        trnmpa::CMpAudioFrameBufferReader index;
        Require(index.Open(trnmpa::IndexPathFor(path)) == 1 && source_.Open(path) == 1, "cannot be opened");
        frames_ = trnmpa::ReadIndexEntries(index, trnmpa::ReadIndexHeader(index).frameCount);
        Require(!frames_.empty(), "the index is empty");
        decoder_->SetBitsource(&source_);
        decoder_->SetOutputBuffer(pcm_.data());
        decoder_->Reset();
        source_.SetPosition(frames_.front().frameOffset);
        decoder_->ReadFrameHeader();
        decoder_->GetFrameInfo(&stream_);
    }
    std::int64_t SamplesPerFrame() const { return stream_.pcmBytes / (stream_.stereo != 0 ? 4 : 2); }
    std::int64_t Samples() const { return static_cast<std::int64_t>(frames_.size()) * SamplesPerFrame(); }

    void Request(std::int64_t start) {
        const std::int64_t target = start / SamplesPerFrame();
        const std::int64_t last = (start + kSamples - 1) / SamplesPerFrame();
        trnmpa::Preroll preroll;
        const std::int64_t first = trnmpa::PrerollStart(stream_, frames_, target, preroll);
        if (first == 0)
            decoder_->Reset();
        source_.SetPosition(frames_[static_cast<std::size_t>(first)].frameOffset);
        for (std::int64_t frame = first; frame <= last; ++frame) {
            decoder_->ReadFrameHeader();
            if (frame < target - preroll.decodedFrames)
                decoder_->SkipFrame();
            else
                decoder_->DecodeFrame();
        }
    }

private:
    std::unique_ptr<IAMPDecoder> decoder_;
    trnmpa::CMpAudioFrameBufferReader source_;
    std::vector<trnmpa::MpaIndexEntry> frames_;
    AMPFrameInfo stream_;
    std::array<short, kMaximumFramePcmValues> pcm_ = {};
};

class Mpg123 {
public:
    explicit Mpg123(const char* path) : handle_(mpg123_new(nullptr, nullptr), mpg123_delete) {
        Require(handle_ != nullptr && mpg123_param(handle_.get(), MPG123_INDEX_SIZE, -1, 0) == MPG123_OK &&
                    mpg123_param(handle_.get(), MPG123_ADD_FLAGS, MPG123_QUIET, 0) == MPG123_OK &&
                    mpg123_open(handle_.get(), path) == MPG123_OK && mpg123_scan(handle_.get()) == MPG123_OK,
                "libmpg123 cannot open the file");
        long rate = 0;
        int channels = 0;
        int encoding = 0;
        Require(mpg123_getformat(handle_.get(), &rate, &channels, &encoding) == MPG123_OK,
                "libmpg123: no format");
        pcm_.resize(static_cast<std::size_t>(channels) * 2 * kSamples);
    }
    std::int64_t Samples() const { return mpg123_length(handle_.get()); }
    void Request(std::int64_t start) {
        std::size_t done = 0;
        Require(mpg123_seek(handle_.get(), static_cast<off_t>(start), SEEK_SET) == start,
                "libmpg123 cannot seek");
        const int result = mpg123_read(handle_.get(), pcm_.data(), pcm_.size(), &done);
        Require(result == MPG123_OK && done == pcm_.size(), "libmpg123 cannot read");
    }

private:
    std::unique_ptr<mpg123_handle, decltype(&mpg123_delete)> handle_;
    std::vector<unsigned char> pcm_;
};

template <typename Reader>
void Time(Reader& reader, std::span<const std::int64_t> starts, std::vector<double>& microseconds) {
    for (const std::int64_t start : starts) {
        const auto started = std::chrono::steady_clock::now();
        reader.Request(start);
        microseconds.push_back(
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - started).count());
    }
}

struct Figures {
    double median = 0;
    double slow = 0; ///< the 99th percentile
};

Figures FiguresOf(std::vector<double> times) {
    std::ranges::sort(times);
    return {times[times.size() / 2], times[times.size() * 99 / 100]};
}

void PrintRow(const char* name, const Figures& figures, const Figures& base) {
    std::printf("| %s | %.1f | %.1f | %.2f | %.2f |\n", name, figures.median, figures.slow,
                base.median / figures.median, base.slow / figures.slow);
}

void Measure(const char* path) {
    const std::wstring wide = os::WidenUtf8(path);
    SampleReader reader(wide);
    BareDecoder decoder(wide);
    Mpg123 peer(path);
    const std::int64_t limit = std::min(decoder.Samples(), peer.Samples()) - 2 * kSamples;
    Require(limit > 0, "the file is too short");
    std::mt19937 generator(20'261'121);
    std::vector<std::int64_t> starts(kRequests);
    for (std::int64_t& start : starts)
        start = static_cast<std::int64_t>(generator() % static_cast<std::uint64_t>(limit));
    // In turns of a hundred, so that a slow moment of the machine hits all, and each works with its own
    // caches; another one begins each turn, since the first brings the file's bytes nearer for all.
    std::array<std::vector<double>, 3> times;
    for (std::size_t first = 0; first < starts.size(); first += kTurn) {
        const auto turn = std::span<const std::int64_t>(starts).subspan(first, kTurn);
        const std::array<std::function<void()>, 3> who = {[&] { Time(reader, turn, times[0]); },
                                                          [&] { Time(decoder, turn, times[1]); },
                                                          [&] { Time(peer, turn, times[2]); }};
        for (std::size_t i = 0; i < who.size(); ++i)
            who[(first / kTurn + i) % who.size()]();
    }
    const Figures ours = FiguresOf(times[0]);
    std::puts("| who | median us | 99th percentile us | sample reader's median is this part | of the 99th |");
    std::puts("|---|---:|---:|---:|---:|");
    PrintRow("sample reader", ours, ours);
    PrintRow("decoder calls", FiguresOf(times[1]), ours);
    PrintRow("libmpg123", FiguresOf(times[2]), ours);
}

} // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("usage: random_access_bench FILE\n", stderr);
        return 2;
    }
    try {
        Measure(arguments[1]);
        return 0;
    } catch (int code) {
        std::fprintf(stderr, "random_access_bench: the decoder threw %d\n", code);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "random_access_bench: %s\n", failure.what());
    }
    return 1;
}
