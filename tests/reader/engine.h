/// The sample reader engine, driven by tests.
#pragma once

#include "reader/result_codes.h"
#include "reader/sample_reader.h"
#include "support/loaded_module.h"
#include "support/test_files.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>

namespace test {

/// An answer of GetSamples, copied out of the engine.
struct Answer {
    std::int32_t result = 0;
    std::int32_t size = -1;
    const unsigned char* data = nullptr;
    Pcm pcm; ///< empty when the read failed
};

class Engine {
public:
    Engine() = default;
    explicit Engine(const std::filesystem::path& path) { Open(path); }

    trnmpa::KwMpAudioReader2& operator*() { return reader_; }
    trnmpa::KwMpAudioReader2* operator->() { return &reader_; }

    /// Initialize, SetInputFile, GetStreamInfo; the first result that is not 1, else 1.
    std::int32_t OpenWide(const std::wstring& path) {
        std::int32_t result = reader_.Initialize();
        if (result == trnmpa::kSuccess)
            result = reader_.SetInputFile(path);
        if (result == trnmpa::kSuccess)
            result = reader_.GetStreamInfo(&info_);
        return opened_ = result;
    }
    std::int32_t Open(const std::filesystem::path& path) { return OpenWide(Wide(path)); }

    /// The result of the last open.
    std::int32_t Opened() const { return opened_; }
    const WAVEFORMATEX& Format() const { return info_.audioFormat; }

    Answer Ask(std::int64_t start, std::uint32_t count) {
        AudioReaderDataIn request;
        request.startSample = start;
        request.sampleCount = count;
        unsigned char* data = nullptr;
        Answer answer;
        answer.result = reader_.GetSamples(request, data, answer.size, nullptr);
        answer.data = data;
        if (answer.result == trnmpa::kSuccess) {
            answer.pcm.resize(static_cast<std::size_t>(answer.size) / sizeof(std::int16_t));
            if (!answer.pcm.empty())
                std::memcpy(answer.pcm.data(), data, answer.pcm.size() * sizeof(std::int16_t));
        }
        return answer;
    }

    /// The PCM of a read; empty when it failed.
    Pcm Read(std::int64_t start, std::uint32_t count) { return Ask(start, count).pcm; }

private:
    trnmpa::KwMpAudioReader2 reader_;
    KW_MEDIA_BASE_INFO_ST info_;
    std::int32_t opened_ = 0;
};

} // namespace test
