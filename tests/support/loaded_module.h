/// The built module, loaded at run time as a host loads it.
#pragma once

#include "os/shared_library.h"
#include "trnmpafileread/plugin.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace test {

/// Interleaved 16-bit PCM.
using Pcm = std::vector<std::int16_t>;

/// Loads the file that TRN_MODULE names and holds its module object. Readers must go before it.
class LoadedModule {
public:
    /// Throws std::runtime_error with the reason when the module cannot be loaded or hands out nothing.
    LoadedModule();

    PLUGIN_FILE_READER_MODULE& Module() { return *module_; }
    os::SharedLibrary& Library() { return library_; }

    /// A reader for the class identifier; throws when there is none.
    std::unique_ptr<PLUGIN_FILE_READER_CLASS>
    CreateReader(std::int32_t identifier = TRN_CLASS_MPEG_AUDIO_LAYER_3);

    /// A reader with `path` opened for reading samples; none when the module refuses the file.
    std::unique_ptr<PLUGIN_FILE_READER_CLASS> OpenForReading(const std::filesystem::path& path);

private:
    os::SharedLibrary library_;
    std::unique_ptr<PLUGIN_FILE_READER_MODULE> module_;
};

/// Samples `start` to `start + count` (both per channel); nothing when the read fails.
std::optional<Pcm> ReadPcm(PLUGIN_FILE_READER_CLASS& reader, std::int64_t start, std::uint32_t count);

} // namespace test
