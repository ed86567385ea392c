#include "support/loaded_module.h"

#include "support/test_files.h"

#include "os/paths.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

namespace test {

LoadedModule::LoadedModule() {
    const char* path = std::getenv("TRN_MODULE");
    if (path == nullptr)
        throw std::runtime_error("TRN_MODULE is not set; run the tests through ctest");
    if (!library_.Load(os::WidenUtf8(path)))
        throw std::runtime_error(std::string(path) + ": " + os::NarrowToUtf8(library_.ErrorText()));
    const auto entry = library_.FunctionNamed<GetPluginReadModuleFunction>("GetPluginReadModule");
    if (entry == nullptr)
        throw std::runtime_error(os::NarrowToUtf8(library_.ErrorText()));
    module_.reset(entry());
    if (module_ == nullptr)
        throw std::runtime_error("GetPluginReadModule gave no module");
}

std::unique_ptr<PLUGIN_FILE_READER_CLASS> LoadedModule::CreateReader(std::int32_t identifier) {
    PLUGIN_FILE_READER_CLASS* reader = nullptr;
    if (module_->CreateReaderClass(identifier, &reader) != 1 || reader == nullptr)
        throw std::runtime_error("no reader for class " + std::to_string(identifier));
    return std::unique_ptr<PLUGIN_FILE_READER_CLASS>(reader);
}

std::unique_ptr<PLUGIN_FILE_READER_CLASS> LoadedModule::OpenForReading(const std::filesystem::path& path) {
    auto reader = CreateReader();
    if (reader->OpenFile(Wide(path), TRN_OPEN_SAMPLE_READER) != 1)
        reader.reset();
    return reader;
}

std::optional<Pcm> ReadPcm(PLUGIN_FILE_READER_CLASS& reader, std::int64_t start, std::uint32_t count) {
    unsigned char* data = nullptr;
    std::int32_t size = 0;
    if (reader.ReadSamples(0, start, count, &data, &size) != 1 || data == nullptr || size < 0)
        return std::nullopt;
    Pcm samples(static_cast<std::size_t>(size) / sizeof(std::int16_t));
    std::memcpy(samples.data(), data, samples.size() * sizeof(std::int16_t));
    return samples;
}

} // namespace test
