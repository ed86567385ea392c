#include "harness/slice_script.h"

namespace fuzz {

namespace {

bool IsTruth(std::int32_t result) {
    return result == 0 || result == 1;
}

} // namespace

SliceScript::SliceScript(Media& media) : media_(media) {}

template <typename Operation>
void SliceScript::Success(const char* name, Operation&& operation) {
    Require(Watched(name, media_.WorkFor(), std::forward<Operation>(operation)) == 1, name);
}

template <typename Operation>
void SliceScript::Truth(const char* name, Operation&& operation) {
    Require(IsTruth(Watched(name, media_.WorkFor(), std::forward<Operation>(operation))), name);
}

void SliceScript::Open() {
    Success("Initialize", [&] { return reader_.Initialize(); });
    Truth("SetInputFile", [&] { return reader_.SetInputFile(Path()); });
    Truth("StartRead", [&] { return reader_.StartRead(); });
    Success("Initialize of places", [&] { return places_.Initialize(); });
    Truth("SetInputFile of places", [&] { return places_.SetInputFile(Path()); });
    Truth("StartRead of places", [&] { return places_.StartRead(); });
    tag_KW_MpaStreamInfo info = {};
    Require(places_.GetOriginalStreamInfo(info) == 1, "stream information");
}

/// Reading one slice with the settings as they are. It has no PCM when the file cannot hold one, or it would
/// have 2 GiB.
Work SliceScript::SliceWork() {
    // No frame has less than 24 bytes, or more PCM.
    const double most = (static_cast<double>(media_.WorkFor().inputBytes) / 24 + 1) * 4608;
    WAVEFORMATEX format = {};
    reader_.GetOriginalStreamInfo(format);
    double bytes = static_cast<double>(time_) / 1e7 * format.nAvgBytesPerSec + format.nBlockAlign;
    if (time_ <= 0 || bytes > most)
        return media_.WorkFor();
    const double original = bytes;
    const bool isConverted = format_.wFormatTag == 1 && format_.nSamplesPerSec != 0;
    if (isConverted && format.nBlockAlign != 0 && format.nSamplesPerSec != 0)
        bytes *= static_cast<double>(format_.nSamplesPerSec) / format.nSamplesPerSec * format_.nChannels *
                 format_.wBitsPerSample / 8 / format.nBlockAlign;
    bytes += 16;
    if (!(bytes > 0 && bytes < 2147483648.0))
        return media_.WorkFor();
    Work work = media_.WorkFor(static_cast<std::size_t>(bytes));
    if (isConverted && format_.nSamplesPerSec != format.nSamplesPerSec)
        work.convertedBytes = static_cast<std::size_t>(original + bytes);
    return work;
}

void SliceScript::Read() {
    unsigned char* data = nullptr;
    std::int32_t length = -1;
    WAVEFORMATEX format = {};
    std::int32_t atEnd = -1;
    const std::int32_t result =
        Watched("ReadFrame", SliceWork(), [&] { return reader_.ReadFrame(&data, length, &format, atEnd); });
    Require(IsTruth(result) && IsTruth(atEnd), "ReadFrame");
    Require(length >= 0 && (length == 0 || data != nullptr), "a slice without PCM");
    Require(result == 1 || length == 0, "a failed read gives PCM");
    Touch({data, static_cast<std::size_t>(length)});
}

void SliceScript::Jump(std::uint32_t slice) {
    Success("SeekTo", [&] { return reader_.SeekTo(slice); });
    Read();
}

void SliceScript::SetTime(Input& script) {
    const std::uint8_t kind = script.U8();
    std::int64_t time = kind * std::int64_t{10'000};
    if (kind >= 0xC0)
        time = kind < 0xF0 ? script.U32() % 100'000'000 : script.I64();
    time_ = time;
    Require(reader_.SetPerPCMFrameTime(time) == 1, "SetPerPCMFrameTime");
}

void SliceScript::SetFormat(Input& script) {
    constexpr std::uint32_t kRates[] = {0, 8000, 11025, 22050, 44100, 48000, 96000, 172, 200, 11'289'600};
    constexpr std::uint16_t kWidths[] = {8, 16, 24, 32};
    WAVEFORMATEX format = {};
    const std::uint8_t kind = script.U8();
    if (kind == 0xFF) {
        format.wFormatTag = script.U16();
        format.nChannels = script.U16();
        format.nSamplesPerSec = script.U32();
        format.nBlockAlign = script.U16();
        format.wBitsPerSample = script.U16();
    } else if (kind >= 0x10) {
        format.wFormatTag = 1;
        format.nChannels = static_cast<std::uint16_t>(1 + kind % 2);
        format.wBitsPerSample = script.Choose(kWidths);
        format.nSamplesPerSec = script.Choose(kRates);
    }
    format_ = format;
    Require(reader_.SetOutputWAVEFormat(format) == 1, "SetOutputWAVEFormat");
}

void SliceScript::Find(std::int64_t time) {
    unsigned long position = 0;
    Truth("SeekTo of places", [&] { return places_.SeekTo(time, position); });
}

void SliceScript::Step(Input& script) {
    switch (script.U8() % 16) {
    case 0:
        Open();
        break;
    case 1:
        Require(reader_.StopRead() == 1, "StopRead");
        break;
    case 2:
        Truth("StartRead", [&] { return reader_.StartRead(); });
        break;
    case 3:
        SetTime(script);
        break;
    case 4:
        SetFormat(script);
        break;
    case 5:
        Find(script.U8() * std::int64_t{100'000});
        break;
    case 6:
        Find(script.I64());
        break;
    case 7:
        Jump(script.U32());
        break;
    case 8:
    case 9:
    case 10:
    case 11:
        Jump(script.U8() % 32u);
        break;
    default:
        Read();
        break;
    }
}

} // namespace fuzz
