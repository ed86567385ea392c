// The plain C functions that read samples.

#include "plugin/c_paths.h"
#include "plugin/c_reader_info.h"
#include "plugin/c_records.h"
#include "plugin/c_results.h"
#include "plugin/module_settings.h"
#include "reader/result_codes.h"
#include "reader/sample_reader.h"

#include <algorithm>
#include <cstring>
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

/// Large reads are done in pieces, so that the engine's buffer does not grow with them.
constexpr std::uint32_t kPieceBytes = 256 * 1024;

trnmpa_result ReadFailure(std::int32_t code) {
    return code == trnmpa::kDecodeFailed ? TRNMPA_ERROR_DECODE : TRNMPA_ERROR_UNEXPECTED;
}

trnmpa_result OpenFailure(std::int32_t code, const std::wstring& path) {
    const std::int32_t decoder = trnmpa::Mp3DecoderUse();
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
    return code == trnmpa::kSuccess ? trnmpa_result{TRNMPA_OK} : OpenFailure(code, path);
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

/// The next piece of a read, as far as the stream goes.
std::int32_t ReadPiece(trnmpa::KwMpAudioReader2& engine, std::int64_t start, std::uint32_t count,
                       std::span<std::uint8_t> pcm) {
    AudioReaderDataIn request;
    request.startSample = start;
    request.sampleCount = count;
    unsigned char* unused = nullptr;
    std::int32_t bytes = 0;
    const std::int32_t code = engine.GetSamples(request, unused, bytes, nullptr);
    if (code == trnmpa::kSuccess)
        std::ranges::copy(engine.DecodedPcm(), pcm.begin());
    return code;
}

/// `pcm` has room for `count` samples.
trnmpa_result ReadPieces(trnmpa_reader& reader, std::int64_t start, std::uint32_t count,
                         std::span<std::uint8_t> pcm, trnmpa_read_result& result) {
    const std::uint32_t block = reader.info.block_bytes;
    const std::uint32_t piece = block != 0 ? std::max(kPieceBytes / block, 1u) : count;
    while (result.samples < count && result.at_end == 0) {
        const auto done = static_cast<std::uint32_t>(result.samples);
        const std::int32_t code = ReadPiece(reader.engine, start + done, std::min(piece, count - done),
                                            pcm.subspan(std::size_t{done} * block));
        if (code != trnmpa::kSuccess)
            return ReadFailure(code);
        result.at_end = reader.engine.MetEnd() || block == 0 ? 1 : 0;
        result.samples = block != 0 ? done + (result.at_end != 0 ? reader.engine.DecodedPcm().size() / block
                                                                 : std::min(piece, count - done))
                                    : 0;
    }
    return TRNMPA_OK;
}

trnmpa_result Read(trnmpa_reader& reader, std::int64_t start, std::uint32_t count,
                   std::span<std::uint8_t> pcm, trnmpa_read_result& result) {
    const trnmpa_result code = ReadPieces(reader, start, count, pcm, result);
    const auto samples = static_cast<std::int64_t>(result.samples);
    const bool beganInStream = samples > 0 || start == 0 || start == reader.readUpTo;
    reader.readUpTo = code == TRNMPA_OK && beganInStream ? start + samples : -1;
    if (code != TRNMPA_OK)
        return code;
    if (result.at_end != 0)
        result.end = reader.readUpTo;
    std::ranges::fill(pcm.subspan(result.samples * reader.info.block_bytes), std::uint8_t{0});
    return code;
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
        return bytes <= buffer_bytes ? Read(*reader, start, count, pcm, found)
                                     : trnmpa_result{TRNMPA_ERROR_BUFFER};
    });
    trnmpa::Give(result, found);
    return code;
}

void trnmpa_reader_close(trnmpa_reader* reader) noexcept {
    delete reader;
}
