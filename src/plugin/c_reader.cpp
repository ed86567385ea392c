// The plain C functions that read samples.

#include "plugin/c_paths.h"
#include "plugin/c_reader_info.h"
#include "plugin/c_records.h"
#include "plugin/c_results.h"
#include "reader/result_codes.h"
#include "reader/sample_reader.h"

#include <algorithm>
#include <memory>
#include <span>
#include <string>

struct trnmpa_reader {
    trnmpa::KwMpAudioReader2 engine;
    trnmpa_info info = {};
    /// The first position behind what was read in one go from a place in the stream; -1 for none.
    std::int64_t readUpTo = 0;
};

namespace {

trnmpa_result OpenFailure(std::int32_t code, std::int32_t decoder, const std::wstring& path) {
    switch (code) {
    case trnmpa::kNoPcmBuffer:
    case trnmpa::kNoFrameBufferReader:
        return TRNMPA_ERROR_MEMORY;
    case trnmpa::kNoDecoder:
        return decoder == 0 ? TRNMPA_ERROR_MEMORY : TRNMPA_ERROR_DECODER;
    case trnmpa::kMediaNotOpened:
        // The engine does not tell a selector that names no decoder apart.
        return decoder == 0 || decoder == 1 ? trnmpa::WhyNotOpened(path) : TRNMPA_ERROR_DECODER;
    case trnmpa::kUnexpectedException:
        return TRNMPA_ERROR_UNEXPECTED;
    default:
        return trnmpa::WhyNotOpened(path);
    }
}

trnmpa_result OpenEngine(trnmpa::KwMpAudioReader2& engine, const std::wstring& path) {
    std::int32_t code = engine.Initialize();
    if (code == trnmpa::kSuccess)
        code = engine.SetInputFile(path);
    KW_MEDIA_BASE_INFO_ST unused;
    if (code == trnmpa::kSuccess)
        code = engine.GetStreamInfo(&unused);
    return code == trnmpa::kSuccess ? trnmpa_result{TRNMPA_OK} : OpenFailure(code, engine.DecoderUse(), path);
}

template <typename Unit>
trnmpa_result Open(const Unit* path, trnmpa_reader** reader) {
    if (reader == nullptr)
        return TRNMPA_ERROR_ARGUMENT;
    *reader = nullptr;
    if (path == nullptr)
        return TRNMPA_ERROR_ARGUMENT;
    const auto file = trnmpa::PathFrom(path);
    if (!file)
        return TRNMPA_ERROR_PATH;
    auto made = std::make_unique<trnmpa_reader>();
    const trnmpa_result result = OpenEngine(made->engine, *file);
    if (result != TRNMPA_OK)
        return result;
    made->info = trnmpa::Describe(made->engine, *file);
    *reader = made.release();
    return TRNMPA_OK;
}

/// Whole samples to all of `pcm`.
trnmpa_result Read(trnmpa_reader& reader, std::int64_t start, std::span<std::uint8_t> pcm,
                   trnmpa_read_result& result) {
    const std::uint32_t block = reader.info.block_bytes;
    std::size_t bytes = 0;
    // Samples without width, as an unfinished index has them, are none.
    const std::int32_t code = block != 0 ? reader.engine.ReadUpToEnd(start, pcm, bytes) : trnmpa::kSuccess;
    const bool beganInStream = bytes != 0 || start == 0 || start == reader.readUpTo;
    reader.readUpTo = -1;
    if (code != trnmpa::kSuccess)
        return code == trnmpa::kDecodeFailed ? TRNMPA_ERROR_DECODE : TRNMPA_ERROR_UNEXPECTED;
    result.samples = block != 0 ? bytes / block : 0;
    if (beganInStream)
        reader.readUpTo = start + static_cast<std::int64_t>(result.samples);
    result.at_end = block == 0 || bytes < pcm.size() ? 1 : 0;
    if (result.at_end != 0)
        result.end = reader.readUpTo;
    std::ranges::fill(pcm.subspan(result.samples * block), std::uint8_t{0});
    return TRNMPA_OK;
}

} // namespace

trnmpa_result trnmpa_reader_open_utf8(const char* path, trnmpa_reader** reader) noexcept {
    return trnmpa::Answer([&] { return Open(path, reader); });
}

trnmpa_result trnmpa_reader_open_utf16(const uint16_t* path, trnmpa_reader** reader) noexcept {
    return trnmpa::Answer([&] { return Open(path, reader); });
}

trnmpa_result trnmpa_reader_info(const trnmpa_reader* reader, trnmpa_info* info) noexcept {
    if (reader == nullptr || !trnmpa::IsUsable(info))
        return TRNMPA_ERROR_ARGUMENT;
    trnmpa::Give(info, reader->info);
    return TRNMPA_OK;
}

trnmpa_result trnmpa_reader_read(trnmpa_reader* reader, int64_t start, uint32_t count, void* buffer,
                                 uint64_t buffer_bytes, trnmpa_read_result* result) noexcept {
    if (reader == nullptr || buffer == nullptr || start < 0 || count == 0 || !trnmpa::IsUsableOrNull(result))
        return TRNMPA_ERROR_ARGUMENT;
    trnmpa_read_result found = {};
    found.end = -1;
    const std::uint64_t bytes = std::uint64_t{count} * reader->info.block_bytes;
    const trnmpa_result code = trnmpa::Answer([&] {
        const std::span pcm(static_cast<std::uint8_t*>(buffer), static_cast<std::size_t>(bytes));
        return bytes <= buffer_bytes ? Read(*reader, start, pcm, found) : trnmpa_result{TRNMPA_ERROR_BUFFER};
    });
    trnmpa::Give(result, found);
    return code;
}

void trnmpa_reader_close(trnmpa_reader* reader) noexcept {
    delete reader;
}
