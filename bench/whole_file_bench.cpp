// whole_file_bench FILE ROUNDS: the whole file to 16-bit samples in memory, by the sample reader with this
// processor's kernels and with the portable ones, by libmpg123 with its fastest and its generic decoder, and
// by libavcodec, in turns; prints rows of a Markdown table.

#include "decoder/kernels/kernel_table.h"
#include "os/paths.h"
#include "reader/sample_reader.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}
#include <mpg123.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Pcm = std::vector<std::int16_t>;

void Require(bool condition, const char* what) {
    if (!condition)
        throw std::runtime_error(what);
}

/// In requests of one second. `samples`: of the whole stream, per channel.
void DecodeWithSampleReader(const std::string& path, std::int64_t samples, Pcm& pcm) {
    trnmpa::KwMpAudioReader2 reader;
    KW_MEDIA_BASE_INFO_ST info;
    Require(reader.Initialize() == 1 && reader.SetInputFile(os::WidenUtf8(path)) == 1 &&
                reader.GetStreamInfo(&info) == 1,
            "the sample reader cannot open the file");
    AudioReaderDataIn request;
    while (request.startSample < samples) {
        request.sampleCount = static_cast<std::uint32_t>(
            std::min<std::int64_t>(info.audioFormat.nSamplesPerSec, samples - request.startSample));
        unsigned char* data = nullptr;
        std::int32_t size = 0;
        Require(reader.GetSamples(request, data, size, nullptr) == 1, "the sample reader failed");
        const std::size_t before = pcm.size();
        pcm.resize(before + static_cast<std::size_t>(size) / sizeof(std::int16_t));
        std::memcpy(pcm.data() + before, data, static_cast<std::size_t>(size));
        request.startSample += request.sampleCount;
    }
}

/// `decoder`: one of the library's, null for the fastest.
void DecodeWithMpg123(const std::string& path, const char* decoder, Pcm& pcm) {
    const std::unique_ptr<mpg123_handle, decltype(&mpg123_delete)> handle(mpg123_new(decoder, nullptr),
                                                                          mpg123_delete);
    Require(handle != nullptr && mpg123_param(handle.get(), MPG123_ADD_FLAGS, MPG123_QUIET, 0) == MPG123_OK &&
                mpg123_open(handle.get(), path.c_str()) == MPG123_OK,
            "libmpg123 cannot open the file");
    constexpr std::size_t kValues = 65536;
    int result = MPG123_OK;
    while (result == MPG123_OK || result == MPG123_NEW_FORMAT) {
        const std::size_t before = pcm.size();
        pcm.resize(before + kValues);
        std::size_t bytes = 0;
        result = mpg123_read(handle.get(), reinterpret_cast<unsigned char*>(pcm.data() + before),
                             kValues * sizeof(std::int16_t), &bytes);
        pcm.resize(before + bytes / sizeof(std::int16_t));
    }
    Require(result == MPG123_DONE, "libmpg123 failed");
}

std::int16_t ToPcm(float value) {
    return static_cast<std::int16_t>(std::lrintf(std::clamp(value * 32768.0f, -32768.0f, 32767.0f)));
}

void Append(const AVFrame& frame, Pcm& pcm) {
    const int channels = frame.ch_layout.nb_channels;
    const bool isFloat = frame.format == AV_SAMPLE_FMT_FLTP;
    Require(isFloat || frame.format == AV_SAMPLE_FMT_S16P, "libavcodec gives samples of another kind");
    std::size_t next = pcm.size();
    pcm.resize(next + static_cast<std::size_t>(frame.nb_samples) * static_cast<std::size_t>(channels));
    for (int i = 0; i < frame.nb_samples; ++i)
        for (int channel = 0; channel < channels; ++channel) {
            const std::uint8_t* plane = frame.extended_data[channel];
            pcm[next++] = isFloat ? ToPcm(reinterpret_cast<const float*>(plane)[i])
                                  : reinterpret_cast<const std::int16_t*>(plane)[i];
        }
}

class AvDecoder {
public:
    explicit AvDecoder(const std::string& path) {
        Require(avformat_open_input(&format_, path.c_str(), nullptr, nullptr) == 0 &&
                    avformat_find_stream_info(format_, nullptr) >= 0,
                "libavformat cannot open the file");
        const AVCodec* codec = nullptr;
        stream_ = av_find_best_stream(format_, AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
        Require(stream_ >= 0, "libavformat finds no audio");
        context_ = avcodec_alloc_context3(codec);
        Require(context_ != nullptr &&
                    avcodec_parameters_to_context(context_, format_->streams[stream_]->codecpar) >= 0,
                "libavcodec: no context");
        context_->thread_count = 1;
        Require(avcodec_open2(context_, codec, nullptr) == 0, "libavcodec cannot start");
    }
    AvDecoder(const AvDecoder&) = delete;
    AvDecoder& operator=(const AvDecoder&) = delete;
    ~AvDecoder() {
        av_packet_free(&packet_);
        av_frame_free(&frame_);
        avcodec_free_context(&context_);
        avformat_close_input(&format_);
    }

    void Decode(Pcm& pcm) {
        while (av_read_frame(format_, packet_) >= 0) {
            if (packet_->stream_index == stream_)
                Pass(packet_, pcm);
            av_packet_unref(packet_);
        }
        Pass(nullptr, pcm);
    }

private:
    void Pass(const AVPacket* packet, Pcm& pcm) {
        avcodec_send_packet(context_, packet);
        while (avcodec_receive_frame(context_, frame_) == 0)
            Append(*frame_, pcm);
    }

    AVFormatContext* format_ = nullptr;
    AVCodecContext* context_ = nullptr;
    AVPacket* packet_ = av_packet_alloc();
    AVFrame* frame_ = av_frame_alloc();
    int stream_ = -1;
};

struct Contestant {
    const char* name;
    std::function<void(Pcm&)> decode;
    std::vector<double> nanoseconds = {}; ///< a value, which is a sample of one channel

    double Median() const {
        std::vector<double> sorted = nanoseconds;
        std::ranges::sort(sorted);
        return sorted[sorted.size() / 2];
    }
};

void Run(Contestant& contestant, Pcm& pcm, bool counts) {
    pcm.clear();
    const std::clock_t started = std::clock();
    contestant.decode(pcm);
    const double nanoseconds = 1e9 * static_cast<double>(std::clock() - started) / CLOCKS_PER_SEC;
    Require(!pcm.empty(), "nothing was decoded");
    if (counts)
        contestant.nanoseconds.push_back(nanoseconds / static_cast<double>(pcm.size()));
}

std::int64_t SamplesOf(const std::string& path) {
    const std::unique_ptr<mpg123_handle, decltype(&mpg123_delete)> handle(mpg123_new(nullptr, nullptr),
                                                                          mpg123_delete);
    Require(handle != nullptr && mpg123_open(handle.get(), path.c_str()) == MPG123_OK &&
                mpg123_scan(handle.get()) == MPG123_OK,
            "libmpg123 cannot count the samples");
    return mpg123_length(handle.get());
}

void Print(const std::string& file, const Contestant& one, const Contestant& peer) {
    const auto [least, most] = std::ranges::minmax(one.nanoseconds);
    std::printf("| %s | %s | %.2f | %.2f to %.2f | %.2f |\n", file.c_str(), one.name, one.Median(), least,
                most, peer.Median() / one.Median());
}

void Measure(const std::string& path, int rounds) {
    const std::int64_t samples = SamplesOf(path);
    const auto withKernels = [&](unsigned mask) {
        return [&path, samples, mask](Pcm& pcm) {
            trnmpa::SetKernelMask(mask);
            DecodeWithSampleReader(path, samples, pcm);
        };
    };
    std::array<Contestant, 5> contestants = {{
        {"sample reader", withKernels(trnmpa::kAllKernels)},
        {"sample reader, portable kernels", withKernels(trnmpa::kPlainKernels)},
        {"libmpg123", [&](Pcm& pcm) { DecodeWithMpg123(path, nullptr, pcm); }},
        {"libmpg123, generic", [&](Pcm& pcm) { DecodeWithMpg123(path, "generic", pcm); }},
        {"libavcodec", [&](Pcm& pcm) { AvDecoder(path).Decode(pcm); }},
    }};
    Pcm pcm;
    for (int round = 0; round <= rounds; ++round)
        for (Contestant& contestant : contestants)
            Run(contestant, pcm, round > 0);
    const Contestant& fastest =
        contestants[2].Median() < contestants[4].Median() ? contestants[2] : contestants[4];
    const std::string name = path.substr(path.rfind('/') + 1);
    for (const Contestant& contestant : contestants)
        Print(name, contestant, fastest);
}

} // namespace

int main(int argc, char** argv) {
    av_log_set_level(AV_LOG_ERROR);
    const int rounds = argc == 3 ? std::atoi(argv[2]) : 0;
    if (rounds < 1) {
        std::fputs("usage: whole_file_bench FILE ROUNDS\n", stderr);
        return 2;
    }
    try {
        Measure(argv[1], rounds);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "whole_file_bench: %s\n", failure.what());
        return 1;
    }
    return 0;
}
