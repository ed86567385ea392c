/// The reader object that the host gets.
#pragma once

#include "mpa/file_probe.h"
#include "reader/sample_reader.h"
#include "trnmpafileread/audio_reader_data_in.h"
#include "trnmpafileread/index_creator.h"
#include "trnmpafileread/plugin.h"

#include <memory>
#include <string>

namespace trnmpa {

class kwMpaPluginReaderClass final : public PLUGIN_FILE_READER_CLASS {
public:
    kwMpaPluginReaderClass();
    ~kwMpaPluginReaderClass() override;

    std::int32_t GetClassInfo(PLUGIN_READER_CLASS_INFO* record) override;
    std::int32_t OpenFile(std::wstring path, std::uint32_t flags) override;
    std::int32_t CreateFileIndex() override;
    std::int32_t GetIndexProgress(std::int32_t kind, PLUGIN_INDEX_PROGRESS* record) override;
    std::int32_t CancelIndexing() override;
    std::int32_t GetFileInfo(std::int32_t kind, void* record) override;
    std::int32_t ClassReserved1() override;
    std::int32_t ReadSamples(std::uint32_t stream, std::int64_t start, std::uint32_t count,
                             unsigned char** data, std::int32_t* size) override;
    std::int32_t ClassReserved2() override;

private:
    std::int32_t OpenProbe();
    std::int32_t OpenSampleReader();
    std::int32_t OpenIndexBuilder();

    PLUGIN_READER_CLASS_INFO info_ = {};
    std::unique_ptr<CMPGAudioFileBufferReader> probe_;
    std::unique_ptr<TRN_MpaFileIndexCreator> indexBuilder_;
    std::unique_ptr<KwMpAudioReader2> sampleReader_;
    AudioReaderDataIn request_;
    std::wstring path_;
};

} // namespace trnmpa
