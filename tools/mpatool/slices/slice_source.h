/// The slices of a file, through the module's class TRN_MpAudioFileReader.
#pragma once

#include "mpatool/module/exported_class.h"
#include "mpatool/pcm/wave_writer.h"
#include "trnmpafileread/frame_readers.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace mpatool {

/// Reads the slices of one file in order. The module must outlive it.
class SliceSource {
public:
    /// Opens the file. `sliceTime` is in units of 100 ns. Throws ToolError.
    SliceSource(ModuleHost& host, const std::wstring& file, std::int64_t sliceTime);

    /// The stream's own format.
    const PcmFormat& Format() const { return format_; }

    /// The format of the slices from now on.
    void Convert(const PcmFormat& output);

    /// The next slice to read.
    void GoTo(std::uint32_t slice);

    /// The next slice; nothing when the stream ends before it is full. The bytes stay valid until the next
    /// call. Throws ToolError when it cannot be read, Interrupted.
    std::optional<std::span<const std::uint8_t>> Next();

private:
    template <typename Member>
    using Function = ExportedFunction<Member>;
    using Reader = TRN_MpAudioFileReader;

    void Open(std::int64_t sliceTime);

    const std::wstring file_;
    ExportedObject<Reader> reader_;
    Function<decltype(&Reader::Initialize)> initialize_;
    Function<decltype(&Reader::SetPerPCMFrameTime)> setSliceTime_;
    Function<decltype(&Reader::SetInputFile)> setInputFile_;
    Function<decltype(&Reader::GetOriginalStreamInfo)> getFormat_;
    Function<decltype(&Reader::SetOutputWAVEFormat)> setOutputFormat_;
    Function<decltype(&Reader::StartRead)> startRead_;
    Function<decltype(&Reader::SeekTo)> seekTo_;
    Function<decltype(&Reader::ReadFrame)> readFrame_;
    PcmFormat format_;
    std::uint32_t slice_ = 0;
};

} // namespace mpatool
