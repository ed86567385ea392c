#include "faults/module_walk_call.h"

#include "trnmediadet/media_info.h"
#include "trnmpafileread/plugin.h"

#include <optional>
#include <string>
#include <utility>

namespace test {

namespace {

class PluginWalk final : public ModuleWalk {
public:
    explicit PluginWalk(const std::filesystem::path& media) : path_(Wide(media)) {}

    std::string_view Name() const override { return "plug-in"; }

private:
    static constexpr std::uint32_t kAll = TRN_OPEN_PROBE | TRN_OPEN_SAMPLE_READER | TRN_OPEN_INDEX_BUILDER;

    void Walk() override {
        if (module_ == nullptr) {
            Call("GetPluginReadModule", StepKind::kOpen, [this] {
                module_.reset(GetPluginReadModule());
                return module_ != nullptr ? 1 : 0;
            });
        }
        if (module_ != nullptr)
            WalkModule();
        if (reader_ != nullptr)
            WalkReader();
    }

    void WalkModule() {
        PLUGIN_READER_MODULE_INFO info = {};
        Call("PLUGIN_FILE_READER_MODULE::GetModuleInfo", StepKind::kObject,
             [&] { return module_->GetModuleInfo(&info); });
        Data(&info, sizeof info);
        std::int32_t identifier = 0;
        std::wstring path = path_;
        Call("PLUGIN_FILE_READER_MODULE::GetClassIdForFile", StepKind::kOpen,
             [&] { return module_->GetClassIdForFile(std::move(path), &identifier); });
        Data(&identifier, sizeof identifier);
        Call("PLUGIN_FILE_READER_MODULE::ModuleReserved1", StepKind::kObject,
             [&] { return module_->ModuleReserved1(); });
        Call("PLUGIN_FILE_READER_MODULE::ModuleReserved2", StepKind::kObject,
             [&] { return module_->ModuleReserved2(); });
        if (reader_ != nullptr)
            return;
        PLUGIN_FILE_READER_CLASS* reader = nullptr;
        Call("PLUGIN_FILE_READER_MODULE::CreateReaderClass", StepKind::kOpen, [&] {
            const std::int32_t result = module_->CreateReaderClass(TRN_CLASS_MPEG_AUDIO_LAYER_3, &reader);
            // Without memory there is no reader, and the call has done what it could.
            return result == 1 && reader == nullptr ? 0 : result;
        });
        reader_.reset(reader);
    }

    void WalkReader() {
        PLUGIN_READER_CLASS_INFO info = {};
        Call("PLUGIN_FILE_READER_CLASS::GetClassInfo", StepKind::kObject,
             [&] { return reader_->GetClassInfo(&info); });
        Data(&info, sizeof info);
        Call("PLUGIN_FILE_READER_CLASS::ClassReserved1", StepKind::kObject,
             [&] { return reader_->ClassReserved1(); });
        Call("PLUGIN_FILE_READER_CLASS::ClassReserved2", StepKind::kObject,
             [&] { return reader_->ClassReserved2(); });
        if (Open(kAll) == 1) {
            Describe();
            ReadSome();
        }
        if (Open(TRN_OPEN_INDEX_BUILDER) == 1)
            Build();
    }

    std::int32_t Open(std::uint32_t flags) {
        std::wstring path = path_;
        const StepKind kind = flags == kAll ? StepKind::kOpen : StepKind::kIndex;
        return Call("PLUGIN_FILE_READER_CLASS::OpenFile", kind,
                    [&] { return reader_->OpenFile(std::move(path), flags); });
    }

    void Describe() {
        TRN_MEDIA_INFO2 probed;
        Call("PLUGIN_FILE_READER_CLASS::GetFileInfo", StepKind::kOpen,
             [&] { return reader_->GetFileInfo(TRN_FILE_INFO_PROBE, &probed); });
        Text(probed.filePath);
        Data(&probed.duration, sizeof probed.duration);
        Data(&probed.audioFormat, sizeof probed.audioFormat);
        KW_MEDIA_BASE_INFO_ST read;
        Call("PLUGIN_FILE_READER_CLASS::GetFileInfo", StepKind::kOpen,
             [&] { return reader_->GetFileInfo(TRN_FILE_INFO_SAMPLE_READER, &read); });
        Data(&read.audioFormat, sizeof read.audioFormat);
    }

    void ReadSome() {
        for (const std::int64_t start : {0, 400, 25'000, 44'800, 500}) {
            unsigned char* data = nullptr;
            std::int32_t size = 0;
            const std::int32_t result =
                Call("PLUGIN_FILE_READER_CLASS::ReadSamples", StepKind::kSamples,
                     [&] { return reader_->ReadSamples(0, start, 400, &data, &size); });
            if (result == 1)
                Data(data, static_cast<std::size_t>(size));
        }
    }

    void Build() {
        Call("PLUGIN_FILE_READER_CLASS::CreateFileIndex", StepKind::kIndex,
             [&] { return reader_->CreateFileIndex(); });
        PLUGIN_INDEX_PROGRESS progress = {};
        Call("PLUGIN_FILE_READER_CLASS::GetIndexProgress", StepKind::kIndex,
             [&] { return reader_->GetIndexProgress(TRN_INDEX_PROGRESS_RECORD, &progress); });
        Data(&progress, sizeof progress);
        Call("PLUGIN_FILE_READER_CLASS::CancelIndexing", StepKind::kIndex,
             [&] { return reader_->CancelIndexing(); });
    }

    std::wstring path_;
    std::unique_ptr<PLUGIN_FILE_READER_MODULE> module_;
    std::unique_ptr<PLUGIN_FILE_READER_CLASS> reader_;
};

} // namespace

std::unique_ptr<ModuleWalk> WalkPlugin(const std::filesystem::path& media) {
    return std::make_unique<PluginWalk>(media);
}

} // namespace test
