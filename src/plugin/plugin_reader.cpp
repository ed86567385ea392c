#include "plugin/plugin_reader.h"

#include "plugin/boundary.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace trnmpa {

kwMpaPluginReaderClass::kwMpaPluginReaderClass() {
    constexpr std::string_view kName = "MPA  Plugin File Reader";
    static_assert(kName.size() < sizeof info_.name);
    std::ranges::copy(kName, info_.name);
    info_.classIdentifier = TRN_CLASS_MPEG_AUDIO_LAYER_2;
    info_.readerKind = 6;
}

kwMpaPluginReaderClass::~kwMpaPluginReaderClass() {
    indexBuilder_.reset();
    probe_.reset();
    sampleReader_.reset();
}

std::int32_t kwMpaPluginReaderClass::GetClassInfo(PLUGIN_READER_CLASS_INFO* record) {
    if (record == nullptr)
        return 0;
    *record = info_;
    return 1;
}

std::int32_t kwMpaPluginReaderClass::OpenFile(std::wstring path, std::uint32_t flags) {
    return Guarded([&]() -> std::int32_t {
        path_ = std::move(path);
        if ((flags & TRN_OPEN_PROBE) != 0) {
            const std::int32_t result = OpenProbe();
            if (result == kProbeVariableBitRate || result < 1)
                return std::max(result, 0);
        }
        if ((flags & (TRN_OPEN_SAMPLE_READER | TRN_OPEN_SAMPLE_READER_ALTERNATE)) != 0 &&
            OpenSampleReader() < 1)
            return 0;
        return (flags & TRN_OPEN_INDEX_BUILDER) != 0 ? TruthOf(OpenIndexBuilder()) : 1;
    });
}

std::int32_t kwMpaPluginReaderClass::OpenProbe() {
    probe_.reset();
    probe_ = std::make_unique<CMPGAudioFileBufferReader>();
    return probe_->ParseFile(path_);
}

std::int32_t kwMpaPluginReaderClass::OpenSampleReader() {
    sampleReader_.reset();
    sampleReader_ = std::make_unique<KwMpAudioReader2>();
    std::int32_t result = sampleReader_->Initialize();
    if (result < 1)
        return result;
    result = sampleReader_->SetInputFile(path_);
    if (result < 1)
        return result;
    KW_MEDIA_BASE_INFO_ST unused;
    return sampleReader_->GetStreamInfo(&unused);
}

std::int32_t kwMpaPluginReaderClass::OpenIndexBuilder() {
    indexBuilder_.reset();
    indexBuilder_ = std::make_unique<TRN_MpaFileIndexCreator>();
    const std::int32_t result = indexBuilder_->Initialize();
    return result < 1 ? result : indexBuilder_->SetInputFile(os::ToAutomationString(path_));
}

std::int32_t kwMpaPluginReaderClass::CreateFileIndex() {
    return WithEngine(indexBuilder_.get(), [](auto& builder) { return TruthOf(builder.CreateFileIndex()); });
}

std::int32_t kwMpaPluginReaderClass::GetIndexProgress(std::int32_t kind, PLUGIN_INDEX_PROGRESS* record) {
    if (record == nullptr || kind != TRN_INDEX_PROGRESS_RECORD)
        return 0;
    PROGRESS_INFO progress = {};
    if (WithEngine(indexBuilder_.get(),
                   [&](auto& builder) { return builder.GetFileIdxingProgress(progress); }) < 1)
        return 0;
    *record = {};
    record->percent = progress.percent;
    record->framesIndexed = progress.framesIndexed;
    record->state = progress.state;
    return 1;
}

std::int32_t kwMpaPluginReaderClass::CancelIndexing() {
    return WithEngine(indexBuilder_.get(), [](auto& builder) { return builder.CancelIndexing(); });
}

std::int32_t kwMpaPluginReaderClass::GetFileInfo(std::int32_t kind, void* record) {
    if (record == nullptr)
        return 0;
    return Guarded([&]() -> std::int32_t {
        if (kind == TRN_FILE_INFO_PROBE && probe_ != nullptr) {
            probe_->ToMediaInfo2(static_cast<TRN_MEDIA_INFO2*>(record));
            return 1;
        }
        if (kind == TRN_FILE_INFO_SAMPLE_READER && sampleReader_ != nullptr)
            return sampleReader_->GetStreamInfo(static_cast<KW_MEDIA_BASE_INFO_ST*>(record));
        return 0;
    });
}

std::int32_t kwMpaPluginReaderClass::ClassReserved1() {
    return 0;
}

std::int32_t kwMpaPluginReaderClass::ReadSamples(std::uint32_t, std::int64_t start, std::uint32_t count,
                                                 unsigned char** data, std::int32_t* size) {
    if (data == nullptr || size == nullptr)
        return 0;
    return WithEngine(sampleReader_.get(), [&](auto& reader) {
        request_.startSample = start;
        request_.sampleCount = count;
        return TruthOf(reader.GetSamples(request_, *data, *size, nullptr));
    });
}

std::int32_t kwMpaPluginReaderClass::ClassReserved2() {
    return 0;
}

} // namespace trnmpa
