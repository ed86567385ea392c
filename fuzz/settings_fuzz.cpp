/// Any bytes as the settings file, which lies beside the program: this one must be alone in its folder.
#include "harness/sample_script.h"
#include "harness/settings.h"

#include "os/profile.h"
#include "plugin/module_settings.h"
#include "reader/reader_streams.h"

#include <cstdint>

namespace {

using fuzz::Require;

void CheckValues(std::int32_t bufferBytes) {
    const std::wstring file = fuzz::SettingsPath();
    const int kiB = os::ReadProfileInt(file, L"FILERW", L"ReadBufSize", -1);
    constexpr std::int32_t kLargest = INT32_MAX;
    const std::int32_t expected = kiB <= 0 ? 512 * 1024 : kiB > kLargest / 1024 ? kLargest : kiB * 1024;
    Require(bufferBytes == expected, "the buffer size");
    Require(trnmpa::Mp3DecoderUse() == os::ReadProfileInt(file, L"CODEC", L"MP3DecoderUse", 0),
            "the decoder");
    Require(trnmpa::ReadMp3BufSize() == os::ReadProfileInt(file, L"READSIZE", L"ReadMp3BufSize", 0),
            "the block size");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Bytes stream = test::SteadyStream(4).bytes;
    fuzz::WriteSettings(fuzz::View(data, size));
    const fuzz::Work work{size, 0, 0};
    CheckValues(fuzz::Watched("ReadModuleSettings", work, [] { return trnmpa::ReadModuleSettings(); }));

    fuzz::Media media(stream);
    fuzz::SampleScript reader(media);
    reader.Open();
    reader.Read(0, 1000);
    reader.Read(100, 1000);
    return 0;
}
