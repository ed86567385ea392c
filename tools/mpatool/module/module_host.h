/// The reader module, loaded at run time, as a host sees it.
#pragma once

#include "os/shared_library.h"
#include "os/wave_format.h"
#include "trnmpafileread/plugin.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

struct KW_MEDIA_BASE_INFO_ST;
struct TRN_MEDIA_INFO2;

namespace mpatool {

/// One media file opened by the module. IndexProgress and CancelIndexing may be called while BuildIndex runs
/// on another thread.
class ModuleReader {
public:
    explicit ModuleReader(std::unique_ptr<PLUGIN_FILE_READER_CLASS> reader) : reader_(std::move(reader)) {}

    /// PLUGIN_FILE_READER_CLASS::OpenFile as it stands.
    std::int32_t Open(const std::wstring& path, std::uint32_t flags) {
        return reader_->OpenFile(path, flags);
    }

    /// What the probe found; nothing without an opened probe.
    std::optional<TRN_MEDIA_INFO2> ProbeInfo();

    /// The format of the PCM that Read delivers; nothing without an opened sample reader.
    std::optional<WAVEFORMATEX> PcmFormat();

    /// Reads `count` samples per channel from `start`. The bytes stay valid until the next call. Nothing when
    /// the module reports a failure.
    std::optional<std::span<const std::uint8_t>> Read(std::int64_t start, std::uint32_t count);

    /// Builds the index of the file, opened with TRN_OPEN_INDEX_BUILDER; the progress tells how it ended.
    void BuildIndex() { reader_->CreateFileIndex(); }
    /// All zeros without an opened index builder. Its percentage wraps for large files.
    PLUGIN_INDEX_PROGRESS IndexProgress();
    /// Asks a running build to stop and waits for its end. Is lost when none runs yet.
    void CancelIndexing() { reader_->CancelIndexing(); }

private:
    std::unique_ptr<PLUGIN_FILE_READER_CLASS> reader_;
};

/// The loaded module. Readers must not outlive it. Not thread-safe.
class ModuleHost {
public:
    /// Loads the module at `path`; empty: the one beside this program. Throws ToolError.
    explicit ModuleHost(const std::wstring& path);

    /// Class identifier for the file's name; 0 when the module does not handle such names.
    std::int32_t ClassIdentifierFor(const std::wstring& file);

    /// Makes a reader for `file`, with nothing opened yet. A name that the module does not know gets the
    /// reader of layer III: one class serves all layers. Throws ToolError.
    ModuleReader CreateReader(const std::wstring& file);

    /// The address of something that the module exports. Null, or a ToolError, when it does not.
    void* Export(const char* name) { return library_.Symbol(name); }
    void* RequireExport(const char* name);

private:
    os::SharedLibrary library_;
    std::wstring path_;
    std::unique_ptr<PLUGIN_FILE_READER_MODULE> module_;
};

/// The module's place when none is named: beside this program, else where it is installed.
std::wstring DefaultModulePath();

} // namespace mpatool
