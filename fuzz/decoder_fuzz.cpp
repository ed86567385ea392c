/// The decoder through its byte source: any bytes, any order of calls, positions changed between them.
#include "harness/limits.h"
#include "harness/target.h"

#include "decoder/decoder_interface.h"

#include <memory>

namespace {

using fuzz::Require;
using fuzz::Touch;

class MemorySource final : public IAMPBitsource {
public:
    explicit MemorySource(fuzz::View bytes) : bytes_(bytes) {}

    unsigned int Read(void* buffer, int count) override {
        Require(count >= 0, "a count below 0");
        const fuzz::View rest = bytes_.subspan(position_);
        const fuzz::View read = rest.first(std::min(rest.size(), static_cast<std::size_t>(count)));
        std::copy(read.begin(), read.end(), static_cast<std::uint8_t*>(buffer));
        position_ += read.size();
        return static_cast<unsigned int>(read.size());
    }
    void MoveTo(std::size_t position) { position_ = std::min(position, bytes_.size()); }

private:
    fuzz::View bytes_;
    std::size_t position_ = 0;
};

class Run {
public:
    explicit Run(fuzz::View stream)
        : stream_(stream), source_(stream_.Bytes()),
          decoder_(AMPDecoderCreate()), work_{stream_.Bytes().size(), 0, 0} {
        Require(decoder_ != nullptr, "no decoder");
        decoder_->SetBitsource(&source_);
        decoder_->SetOutputBuffer(pcm_.get());
        decoder_->Reset();
    }

    /// False when the decoder has thrown.
    template <typename Operation>
    bool Try(const char* name, Operation&& operation) {
        try {
            fuzz::Watched(name, work_, operation);
            return true;
        } catch (int code) {
            Require(code == AMP_ERR_END_OF_STREAM || code == AMP_ERR_READ, "another code is thrown");
            Touch({reinterpret_cast<const std::uint8_t*>(decoder_->GetErrorText(code)), 1});
            return false;
        }
    }

    bool Header() {
        return Try("header", [&] { decoder_->ReadFrameHeader(); }) && Info();
    }

    /// False without a frame.
    bool Info() {
        AMPFrameInfo info;
        Require(decoder_->GetFrameInfo(&info) == static_cast<unsigned int>(info.pcmBytes), "PCM bytes");
        Require(info.pcmBytes >= 0 && info.pcmBytes <= 2 * kMaximumFramePcmValues, "too many PCM bytes");
        Require(info.frameBytes >= 0 && info.frameBytes <= 2 * 1729, "frame length");
        return info.synced != 0;
    }

    bool Decode() {
        bool decoded = false;
        if (!Try("decode", [&] { decoded = decoder_->DecodeFrame(); }))
            return false;
        if (decoded) {
            const std::size_t values = decoder_->GetOutputSize();
            Require(values <= kMaximumFramePcmValues, "too many values");
            Touch({reinterpret_cast<const std::uint8_t*>(pcm_.get()), values * sizeof(short)});
        }
        return true;
    }

    void Step(fuzz::Input& script) {
        switch (script.U8() % 8) {
        case 0:
        case 1:
            Header();
            break;
        case 2:
        case 3:
            Decode();
            break;
        case 4:
            Try("skip", [&] { decoder_->SkipFrame(); });
            break;
        case 5:
            decoder_->Reset();
            break;
        case 6:
            source_.MoveTo(script.U16());
            break;
        default:
            decoder_->SetOutputBuffer((script.U8() & 1) != 0 ? nullptr : pcm_.get());
            break;
        }
    }

    void DecodeAllFrom(std::size_t position) {
        source_.MoveTo(position);
        decoder_->SetOutputBuffer(pcm_.get());
        fuzz::Watched("whole stream", work_, [&] {
            while (Header() && Decode()) {
            }
        });
    }

private:
    fuzz::ExactBlock stream_;
    MemorySource source_;
    std::unique_ptr<IAMPDecoder> decoder_;
    std::unique_ptr<short[]> pcm_{new short[kMaximumFramePcmValues]};
    fuzz::Work work_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input({data, size});
    fuzz::Input script(input.Part());
    const fuzz::View stream = input.Rest();
    Run run(stream);
    while (!script.IsEmpty())
        run.Step(script);
    run.DecodeAllFrom(0);
    Run(stream).DecodeAllFrom(0);
    return 0;
}
