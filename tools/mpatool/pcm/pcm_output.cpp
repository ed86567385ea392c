#include "mpatool/pcm/pcm_output.h"

#include "mpatool/output/tool_error.h"

namespace mpatool {

PcmOutput::PcmOutput(const OutputChoice& choice, const std::wstring& input, bool force)
    : target_(choice.path, input, force), input_(input), isWave_(choice.format == OutputFormat::kWave) {}

void PcmOutput::Begin(const PcmFormat& format, std::int64_t samples) {
    announced_ = static_cast<std::uint64_t>(samples) * format.BytesPerSample();
    if (isWave_)
        target_.Write(WaveHeader(format, announced_));
}

void PcmOutput::Write(std::span<const std::uint8_t> pcm) {
    target_.Write(pcm);
    written_ += pcm.size();
}

void PcmOutput::Commit() {
    if (written_ != announced_)
        throw ToolError(input_, "the module delivered another amount than it announced");
    if (isWave_)
        target_.Write(WavePadding(announced_));
    target_.Commit();
}

} // namespace mpatool
