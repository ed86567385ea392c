#include "mpatool/slices/slice_source.h"

#include "mpatool/module/exported_names.h"
#include "mpatool/output/tool_error.h"
#include "os/console.h"

namespace mpatool {

namespace {

constexpr std::int64_t kUnitsPerSecond = 10'000'000;

} // namespace

SliceSource::SliceSource(ModuleHost& host, const std::wstring& file, std::int64_t sliceTime)
    : file_(file), reader_(host, exported::kSliceReaderMake, exported::kSliceReaderEnd),
      initialize_(host, exported::kInitialize), setSliceTime_(host, exported::kSetPerPcmFrameTime),
      setInputFile_(host, exported::kSetInputFile), getFormat_(host, exported::kGetOriginalStreamInfo),
      setOutputFormat_(host, exported::kSetOutputFormat), startRead_(host, exported::kStartRead),
      seekTo_(host, exported::kSeekTo), readFrame_(host, exported::kReadFrame) {
    Open(sliceTime);
}

void SliceSource::Open(std::int64_t sliceTime) {
    void* reader = reader_.Get();
    if (initialize_(reader) != 1)
        throw ToolError(file_, "the module has no memory for a slice reader");
    if (setSliceTime_(reader, sliceTime) != 1 || setInputFile_(reader, os::ToAutomationString(file_)) != 1 ||
        startRead_(reader) != 1)
        throw ToolError(file_, "the module cannot open it");
    WAVEFORMATEX format = {};
    getFormat_(reader, format);
    format_ = {format.nSamplesPerSec, format.nChannels, format.wBitsPerSample};
    if (format_.sampleRate == 0 || format_.BytesPerSample() == 0)
        throw ToolError(file_, "the module does not tell its format");
    // An index may claim any rate; slices without samples would go on and on.
    if (format_.sampleRate * sliceTime < kUnitsPerSecond)
        throw ToolError(file_, "slices of that time hold no sample at " + std::to_string(format_.sampleRate) +
                                   " Hz");
}

void SliceSource::Convert(const PcmFormat& output) {
    WAVEFORMATEX format = ToWaveFormat(output);
    setOutputFormat_(reader_.Get(), format);
}

void SliceSource::GoTo(std::uint32_t slice) {
    seekTo_(reader_.Get(), slice);
    slice_ = slice;
}

std::optional<std::span<const std::uint8_t>> SliceSource::Next() {
    if (os::InterruptRequested())
        throw Interrupted();
    unsigned char* data = nullptr;
    std::int32_t length = 0;
    WAVEFORMATEX format = {};
    std::int32_t atEnd = 0;
    const std::int32_t result = readFrame_(reader_.Get(), &data, length, &format, atEnd);
    if (result != 1 && atEnd == 1)
        return std::nullopt;
    // A fault on the way to a slice gives success without one.
    if (result != 1 || data == nullptr || length < 0)
        throw ToolError(file_, "the module cannot read slice " + std::to_string(slice_));
    ++slice_;
    return std::span<const std::uint8_t>(data, static_cast<std::size_t>(length));
}

} // namespace mpatool
