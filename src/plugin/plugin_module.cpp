#include "plugin/plugin_module.h"

#include "plugin/boundary.h"
#include "plugin/plugin_reader.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace trnmpa {

namespace {

struct AcceptedExtension {
    std::wstring_view text;
    std::int32_t identifier;
};

constexpr AcceptedExtension kAcceptedExtensions[] = {
    {L"MP1", TRN_CLASS_MPEG_AUDIO_LAYER_1}, {L"MP2", TRN_CLASS_MPEG_AUDIO_LAYER_2},
    {L"M2A", TRN_CLASS_MPEG_AUDIO_LAYER_2}, {L"S48", TRN_CLASS_MPEG_AUDIO_LAYER_2},
    {L"MP3", TRN_CLASS_MPEG_AUDIO_LAYER_3},
};

/// ASCII only: the result must not follow the host's locale.
wchar_t ToUpper(wchar_t character) {
    return character >= L'a' && character <= L'z' ? static_cast<wchar_t>(character - L'a' + L'A') : character;
}

/// The text after the last dot, or all of it, in upper case.
std::wstring UpperCaseExtension(const std::wstring& path) {
    std::wstring extension = path.substr(path.rfind(L'.') + 1);
    std::ranges::transform(extension, extension.begin(), ToUpper);
    return extension;
}

} // namespace

kwMpaPluginReaderModule::kwMpaPluginReaderModule() {
    constexpr std::string_view kVersionTag = "1000";
    constexpr std::string_view kName = "MPA Plugin Reader Module";
    static_assert(kName.size() < sizeof info_.name);
    std::ranges::copy(kVersionTag, info_.versionTag);
    std::ranges::copy(kName, info_.name);
    info_.classIdentifiers[info_.classIdentifierCount++] = TRN_CLASS_MPEG_AUDIO_LAYER_1;
    info_.classIdentifiers[info_.classIdentifierCount++] = TRN_CLASS_MPEG_AUDIO_LAYER_2;
    info_.classIdentifiers[info_.classIdentifierCount++] = TRN_CLASS_MPEG_AUDIO_LAYER_3;
    info_.moduleKind = 1;
}

std::int32_t kwMpaPluginReaderModule::GetModuleInfo(PLUGIN_READER_MODULE_INFO* record) {
    if (record == nullptr)
        return 0;
    *record = info_;
    return 1;
}

std::int32_t kwMpaPluginReaderModule::GetClassIdForFile(std::wstring path, std::int32_t* identifier) {
    if (identifier == nullptr)
        return 0;
    *identifier = 0;
    return Guarded([&] {
        const std::wstring extension = UpperCaseExtension(path);
        const auto accepted =
            std::ranges::find(kAcceptedExtensions, std::wstring_view(extension), &AcceptedExtension::text);
        if (accepted == std::end(kAcceptedExtensions))
            return 0;
        *identifier = accepted->identifier;
        return 1;
    });
}

std::int32_t kwMpaPluginReaderModule::ModuleReserved1() {
    return 0;
}

bool kwMpaPluginReaderModule::Serves(std::int32_t identifier) const {
    return std::ranges::count(std::span(info_.classIdentifiers).first(info_.classIdentifierCount),
                              identifier) > 0;
}

std::int32_t kwMpaPluginReaderModule::CreateReaderClass(std::int32_t identifier,
                                                        PLUGIN_FILE_READER_CLASS** reader) {
    if (reader == nullptr || !Serves(identifier))
        return 0;
    *reader = nullptr;
    // Without memory the host sees a null reader, not a failure.
    Guarded([&] {
        *reader = new kwMpaPluginReaderClass;
        return 1;
    });
    return 1;
}

std::int32_t kwMpaPluginReaderModule::ModuleReserved2() {
    return 1;
}

} // namespace trnmpa
