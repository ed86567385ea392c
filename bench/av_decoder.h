/// Whole files to interleaved 16-bit samples by libavformat, libavcodec and libswresample, on one thread, as
/// a plain host would do it, by the fastest decoder that libavcodec has for them.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
}

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

class AvDecoder {
public:
    /// Throws std::runtime_error when the file cannot be opened.
    explicit AvDecoder(const std::string& path) {
        Require(avformat_open_input(&format_, path.c_str(), nullptr, nullptr) == 0 &&
                    avformat_find_stream_info(format_, nullptr) >= 0,
                "libavformat cannot open the file");
        const AVCodec* codec = nullptr;
        stream_ = av_find_best_stream(format_, AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
        Require(stream_ >= 0, "libavformat finds no audio");
        context_ = avcodec_alloc_context3(FastestFor(codec));
        Require(context_ != nullptr &&
                    avcodec_parameters_to_context(context_, format_->streams[stream_]->codecpar) >= 0,
                "libavcodec: no context");
        context_->thread_count = 1;
        Require(avcodec_open2(context_, nullptr, nullptr) == 0, "libavcodec cannot start");
        Require(swr_alloc_set_opts2(&converter_, &context_->ch_layout, AV_SAMPLE_FMT_S16,
                                    context_->sample_rate, &context_->ch_layout, context_->sample_fmt,
                                    context_->sample_rate, 0, nullptr) == 0 &&
                    swr_init(converter_) == 0,
                "libswresample cannot start");
    }
    AvDecoder(const AvDecoder&) = delete;
    AvDecoder& operator=(const AvDecoder&) = delete;
    ~AvDecoder() {
        swr_free(&converter_);
        av_packet_free(&packet_);
        av_frame_free(&frame_);
        avcodec_free_context(&context_);
        avformat_close_input(&format_);
    }

    /// Appends the whole file to `pcm`.
    void Decode(std::vector<std::int16_t>& pcm) {
        while (av_read_frame(format_, packet_) >= 0) {
            if (packet_->stream_index == stream_)
                Pass(packet_, pcm);
            av_packet_unref(packet_);
        }
        Pass(nullptr, pcm);
    }

private:
    static void Require(bool condition, const char* what) {
        if (!condition)
            throw std::runtime_error(what);
    }

    /// Layer II's default is the slower one, in integers.
    static const AVCodec* FastestFor(const AVCodec* codec) {
        const AVCodec* inFloats =
            codec->id == AV_CODEC_ID_MP2 ? avcodec_find_decoder_by_name("mp2float") : nullptr;
        return inFloats != nullptr ? inFloats : codec;
    }

    void Pass(const AVPacket* packet, std::vector<std::int16_t>& pcm) {
        avcodec_send_packet(context_, packet);
        while (avcodec_receive_frame(context_, frame_) == 0)
            Append(pcm);
    }

    void Append(std::vector<std::int16_t>& pcm) {
        const int channels = context_->ch_layout.nb_channels;
        Require(frame_->format == context_->sample_fmt && frame_->ch_layout.nb_channels == channels,
                "libavcodec changes its kind of samples");
        const std::size_t before = pcm.size();
        pcm.resize(before +
                   static_cast<std::size_t>(frame_->nb_samples) * static_cast<std::size_t>(channels));
        auto* output = reinterpret_cast<std::uint8_t*>(pcm.data() + before);
        const auto** input = const_cast<const std::uint8_t**>(frame_->extended_data);
        Require(swr_convert(converter_, &output, frame_->nb_samples, input, frame_->nb_samples) ==
                    frame_->nb_samples,
                "libswresample keeps samples back");
    }

    AVFormatContext* format_ = nullptr;
    AVCodecContext* context_ = nullptr;
    SwrContext* converter_ = nullptr;
    AVPacket* packet_ = av_packet_alloc();
    AVFrame* frame_ = av_frame_alloc();
    int stream_ = -1;
};

} // namespace bench
