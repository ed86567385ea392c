#include "mpatool/selftest/checks.h"
#include "os/paths.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace mpatool {

namespace {

constexpr unsigned char kUntouched = 0xCC;

/// A record as the module fills it, with bytes behind it that are not its own.
template <typename Record>
struct MarkedRecord {
    Record record;
    std::array<unsigned char, 32> guard{};

    MarkedRecord() {
        std::memset(&record, kUntouched, sizeof record);
        guard.fill(kUntouched);
    }
};

template <typename Record>
void CheckRecord(const std::string& name, const MarkedRecord<Record>& found, const Record& wanted,
                 Verdicts& verdicts) {
    std::array<unsigned char, sizeof(Record)> left = {};
    std::array<unsigned char, sizeof(Record)> right = {};
    std::memcpy(left.data(), &found.record, sizeof found.record);
    std::memcpy(right.data(), &wanted, sizeof wanted);
    const auto different = std::ranges::mismatch(left, right).in1 - left.begin();
    verdicts.Check(name + ": record of " + std::to_string(sizeof(Record)) + " bytes", left == right,
                   "byte " + std::to_string(different) + " differs");
    verdicts.Check(name + ": nothing behind the record is written",
                   std::ranges::all_of(found.guard, [](unsigned char byte) { return byte == kUntouched; }));
}

PLUGIN_READER_MODULE_INFO ModuleIdentity() {
    PLUGIN_READER_MODULE_INFO info = {};
    std::memcpy(info.versionTag, "1000", sizeof info.versionTag);
    std::strcpy(info.name, "MPA Plugin Reader Module");
    info.classIdentifierCount = 3;
    for (int layer = 0; layer < 3; ++layer)
        info.classIdentifiers[layer] = TRN_CLASS_MPEG_AUDIO_LAYER_1 + layer;
    info.moduleKind = 1;
    return info;
}

PLUGIN_READER_CLASS_INFO ReaderIdentity() {
    PLUGIN_READER_CLASS_INFO info = {};
    std::strcpy(info.name, "MPA  Plugin File Reader");
    info.classIdentifier = TRN_CLASS_MPEG_AUDIO_LAYER_2;
    info.readerKind = 6;
    return info;
}

struct NamedClass {
    const wchar_t* file;
    std::int32_t identifier; ///< 0: not the module's
};

constexpr NamedClass kNamedClasses[] = {
    {L"song.mp1", TRN_CLASS_MPEG_AUDIO_LAYER_1},
    {L"song.mp2", TRN_CLASS_MPEG_AUDIO_LAYER_2},
    {L"song.m2a", TRN_CLASS_MPEG_AUDIO_LAYER_2},
    {L"song.s48", TRN_CLASS_MPEG_AUDIO_LAYER_2},
    {L"song.mp3", TRN_CLASS_MPEG_AUDIO_LAYER_3},
    {L"SONG.Mp3", TRN_CLASS_MPEG_AUDIO_LAYER_3},
    {L"a.b.mp3", TRN_CLASS_MPEG_AUDIO_LAYER_3},
    {L"mp3", TRN_CLASS_MPEG_AUDIO_LAYER_3},
    {L"song.wav", 0},
    {L"song.mp3.idx", 0},
    {L"song", 0},
    {L"", 0},
};

void CheckNames(PLUGIN_FILE_READER_MODULE& module, Verdicts& verdicts) {
    for (const NamedClass& known : kNamedClasses) {
        std::int32_t identifier = -1;
        const std::int32_t result = module.GetClassIdForFile(known.file, &identifier);
        verdicts.Check("name '" + os::NarrowToUtf8(known.file) + "' has class " +
                           std::to_string(known.identifier),
                       identifier == known.identifier && result == (known.identifier != 0 ? 1 : 0),
                       "class " + std::to_string(identifier) + ", result " + std::to_string(result));
    }
}

void CheckCreation(PLUGIN_FILE_READER_MODULE& module, Verdicts& verdicts) {
    verdicts.CheckResult("CreateReaderClass without a place for the reader", 0,
                         module.CreateReaderClass(TRN_CLASS_MPEG_AUDIO_LAYER_3, nullptr));
    for (const std::int32_t other : {0, TRN_CLASS_MPEG_AUDIO_LAYER_1 - 1, TRN_CLASS_MPEG_AUDIO_LAYER_3 + 1}) {
        PLUGIN_FILE_READER_CLASS* made = nullptr;
        verdicts.CheckResult("CreateReaderClass of " + std::to_string(other), 0,
                             module.CreateReaderClass(other, &made));
    }
    for (std::int32_t known = TRN_CLASS_MPEG_AUDIO_LAYER_1; known <= TRN_CLASS_MPEG_AUDIO_LAYER_3; ++known) {
        PLUGIN_FILE_READER_CLASS* made = nullptr;
        const std::int32_t result = module.CreateReaderClass(known, &made);
        const std::unique_ptr<PLUGIN_FILE_READER_CLASS> reader(made);
        verdicts.Check("CreateReaderClass of " + std::to_string(known), result == 1 && reader != nullptr);
        MarkedRecord<PLUGIN_READER_CLASS_INFO> info;
        if (reader != nullptr && reader->GetClassInfo(&info.record) == 1)
            CheckRecord("reader of " + std::to_string(known), info, ReaderIdentity(), verdicts);
    }
}

} // namespace

std::unique_ptr<PLUGIN_FILE_READER_CLASS> NewReader(PLUGIN_FILE_READER_MODULE& module) {
    PLUGIN_FILE_READER_CLASS* made = nullptr;
    module.CreateReaderClass(TRN_CLASS_MPEG_AUDIO_LAYER_3, &made);
    return std::unique_ptr<PLUGIN_FILE_READER_CLASS>(made);
}

void CheckModule(PLUGIN_FILE_READER_MODULE& module, Verdicts& verdicts) {
    verdicts.CheckResult("GetModuleInfo without a record", 0, module.GetModuleInfo(nullptr));
    MarkedRecord<PLUGIN_READER_MODULE_INFO> info;
    verdicts.CheckResult("GetModuleInfo", 1, module.GetModuleInfo(&info.record));
    CheckRecord("module", info, ModuleIdentity(), verdicts);
    verdicts.CheckResult("ModuleReserved1", 0, module.ModuleReserved1());
    verdicts.CheckResult("ModuleReserved2", 1, module.ModuleReserved2());
    CheckNames(module, verdicts);
    CheckCreation(module, verdicts);
}

} // namespace mpatool
