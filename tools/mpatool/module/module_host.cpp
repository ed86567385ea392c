#include "mpatool/module/module_host.h"

#include "mpatool/output/tool_error.h"
#include "os/paths.h"
#include "trnmediadet/media_info.h"

#include <string_view>

namespace mpatool {

namespace {

constexpr std::string_view kInterfaceVersion = "1000";

bool HasKnownInterface(PLUGIN_FILE_READER_MODULE& module) {
    PLUGIN_READER_MODULE_INFO info = {};
    return module.GetModuleInfo(&info) == 1 &&
           std::string_view(info.versionTag, sizeof info.versionTag) == kInterfaceVersion;
}

} // namespace

std::wstring DefaultModulePath() {
    const std::wstring program = os::ExecutablePath();
    const std::size_t separator = program.rfind(os::kPathSeparator);
    const std::wstring folder = separator == std::wstring::npos ? L"" : program.substr(0, separator + 1);
    const std::wstring name = os::SharedLibraryFileName(L"trnmpafileread");
    const std::wstring installed = folder + MPATOOL_MODULE_FOLDER + os::kPathSeparator + name;
    return !os::IsReadable(folder + name) && os::IsReadable(installed) ? installed : folder + name;
}

ModuleHost::ModuleHost(const std::wstring& path) : path_(path.empty() ? DefaultModulePath() : path) {
    if (!library_.Load(path_))
        throw ToolError(path_, L"the module cannot be loaded: " + library_.ErrorText());
    const auto entry = library_.FunctionNamed<GetPluginReadModuleFunction>("GetPluginReadModule");
    if (entry == nullptr)
        throw ToolError(path_, L"not a reader module: " + library_.ErrorText());
    module_.reset(entry());
    if (module_ == nullptr)
        throw ToolError(path_, "the module has no memory to start");
    if (!HasKnownInterface(*module_))
        throw ToolError(path_, "a reader module of another interface version");
}

std::int32_t ModuleHost::ClassIdentifierFor(const std::wstring& file) {
    std::int32_t identifier = 0;
    return module_->GetClassIdForFile(file, &identifier) == 1 ? identifier : 0;
}

ModuleReader ModuleHost::CreateReader(const std::wstring& file) {
    const std::int32_t known = ClassIdentifierFor(file);
    PLUGIN_FILE_READER_CLASS* reader = nullptr;
    const std::int32_t result =
        module_->CreateReaderClass(known != 0 ? known : TRN_CLASS_MPEG_AUDIO_LAYER_3, &reader);
    if (result != 1 || reader == nullptr)
        throw ToolError(file, "the module makes no reader for it");
    return ModuleReader(std::unique_ptr<PLUGIN_FILE_READER_CLASS>(reader));
}

void* ModuleHost::RequireExport(const char* name) {
    void* const address = library_.Symbol(name);
    if (address == nullptr)
        throw ToolError(path_, L"the module lacks a class: " + library_.ErrorText());
    return address;
}

std::optional<TRN_MEDIA_INFO2> ModuleReader::ProbeInfo() {
    TRN_MEDIA_INFO2 info;
    if (reader_->GetFileInfo(TRN_FILE_INFO_PROBE, &info) != 1)
        return std::nullopt;
    return info;
}

std::optional<WAVEFORMATEX> ModuleReader::PcmFormat() {
    KW_MEDIA_BASE_INFO_ST info;
    if (reader_->GetFileInfo(TRN_FILE_INFO_SAMPLE_READER, &info) != 1)
        return std::nullopt;
    return info.audioFormat;
}

std::optional<std::span<const std::uint8_t>> ModuleReader::Read(std::int64_t start, std::uint32_t count) {
    unsigned char* data = nullptr;
    std::int32_t bytes = 0;
    constexpr std::uint32_t kIgnoredStream = 0;
    if (reader_->ReadSamples(kIgnoredStream, start, count, &data, &bytes) != 1 || data == nullptr ||
        bytes < 0)
        return std::nullopt;
    return std::span<const std::uint8_t>(data, static_cast<std::size_t>(bytes));
}

PLUGIN_INDEX_PROGRESS ModuleReader::IndexProgress() {
    PLUGIN_INDEX_PROGRESS progress = {};
    if (reader_->GetIndexProgress(TRN_INDEX_PROGRESS_RECORD, &progress) != 1)
        return {};
    return progress;
}

} // namespace mpatool
