/// A decoder whose frames are known, with faults where a test wants them, and an engine over it.
#pragma once

#include "reader/frame_source.h"
#include "reader/result_codes.h"
#include "reader/sample_reader.h"
#include "support/loaded_module.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace test {

/// What becomes of a decode.
enum class Fault {
    kNothing, ///< no PCM
    kBad,     ///< PCM, and a failure
    kEnd,     ///< the decoder's end of stream is thrown
    kCode,    ///< another of its codes is thrown
    kOther,   ///< something else is thrown
};

/// What the decoder does, and what it was asked for.
struct Script {
    static constexpr int kForEver = -1;
    struct Plan {
        Fault fault = Fault::kNothing;
        int times = kForEver;
    };
    struct Jump {
        std::int64_t offset = 0;
        std::int64_t frame = 0;
        bool operator==(const Jump&) const = default;
    };

    int layer = 3;
    std::int64_t frames = 40;
    /// As the external decoder: empty decodes are tried again, the end is one of them.
    bool isExternal = true;
    std::map<std::int64_t, Plan> faults; ///< by frame

    bool opens = true;
    bool hasFirstFrame = true;
    bool firstFrameThrows = false;

    std::vector<Jump> jumps;
    std::vector<std::int64_t> decodes; ///< frames that were tried

    std::int64_t TriesOf(std::int64_t frame) const;
    void ForgetCalls();
};

/// MPEG-1, stereo, 44100 Hz, frames of 417 bytes, back to back from offset 0. A frame's PCM is right only
/// when the frame before it was decoded last.
class ScriptedFrames final : public trnmpa::FrameSource {
public:
    static constexpr std::int64_t kFrameBytes = 417;
    static constexpr std::int64_t kSamplesPerFrame = 1152;
    static constexpr std::int32_t kDelay = 529;

    /// The right PCM of a frame.
    static Pcm FramePcm(std::int64_t frame);

    explicit ScriptedFrames(Script& script) : script_(script) {}

    void SetFile(const std::wstring&, std::uint32_t) override {}
    bool Open() override { return script_.opens; }
    trnmpa::HeaderSource& Bytes() override { return bytes_; }
    std::int64_t Length() override { return script_.frames * kFrameBytes; }
    bool FindFirstFrame(AMPFrameInfo& frame, std::int64_t& offset) override;
    AMPFrameInfo DescribeFrameAt(std::int64_t offset) override;
    void MoveTo(std::int64_t offset) override { next_ = offset / kFrameBytes; }
    void JumpTo(std::int64_t offset, std::int64_t frame) override;
    void Skip(const AMPFrameInfo& stream) override;
    Outcome Decode(const AMPFrameInfo& stream, std::int16_t* pcm) override;
    std::int32_t Delay(std::int32_t layer) const override { return layer == 3 ? kDelay : 0; }
    bool HalvesLayer3() const override { return false; }
    bool DeservesRetries() const override { return script_.isExternal; }

private:
    /// A file of zeros, in which every header equals every other.
    class Zeros final : public trnmpa::HeaderSource {
    public:
        std::size_t Read(std::span<std::uint8_t> destination) override;
        std::int64_t Position() override { return 0; }
        bool SetPosition(std::int64_t) override { return true; }
    };

    Script& script_;
    Zeros bytes_;
    std::int64_t next_ = 0;
    std::int64_t last_ = -1; ///< the frame that was decoded last
};

/// The engine over such frames.
class ScriptedEngine {
public:
    explicit ScriptedEngine(Script& script) : reader_(script) {}

    /// All steps of an open; the first result that is not 1, else 1. Where there is no file, frames are found
    /// all the same.
    std::int32_t Open(const std::wstring& path = L"no such folder/a.mp3");
    trnmpa::KwMpAudioReader2* operator->() { return &reader_; }

    struct Answer {
        std::int32_t result = 0;
        std::int32_t size = -1;
        bool hasData = false;
        Pcm pcm;
    };
    Answer Ask(std::int64_t start, std::uint32_t count);

private:
    class Reader final : public trnmpa::KwMpAudioReader2 {
    public:
        explicit Reader(Script& script) : script_(script) {}

    protected:
        std::unique_ptr<trnmpa::FrameSource> CreateFrames(std::int32_t) override {
            return std::make_unique<ScriptedFrames>(script_);
        }

    private:
        Script& script_;
    };

    Reader reader_;
};

} // namespace test
