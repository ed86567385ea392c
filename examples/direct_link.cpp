// A host that links the module's classes: builds an index, reads samples, reads slices in another format.
//
//     direct_link FILE

#include "trnmpafileread/audio_reader.h"
#include "trnmpafileread/frame_readers.h"
#include "trnmpafileread/index_creator.h"

#include <cstdio>
#include <filesystem>
#include <string>

namespace {

bool BuildIndex(const std::wstring& file) {
    TRN_MpaFileIndexCreator creator;
    if (creator.Initialize() != 1 || creator.SetInputFile(file.c_str()) != 1 ||
        creator.CreateFileIndex() != 1)
        return false;
    PROGRESS_INFO progress = {};
    creator.GetFileIdxingProgress(progress);
    std::printf("index: %u frames, state %u\n", progress.framesIndexed, progress.state);
    return progress.state == TRN_INDEX_FINISHED;
}

bool ReadSamples(const std::wstring& file) {
    TRN_MpAudioFileReader2 reader;
    KW_MEDIA_BASE_INFO_ST info;
    if (reader.Initialize() != 1 || reader.SetInputFile(file.c_str()) != 1 || reader.GetItemInfo(&info) != 1)
        return false;
    AudioReaderDataIn request;
    request.startSample = 10'000;
    request.sampleCount = 1'000;
    unsigned char* pcm = nullptr; // belongs to the reader
    std::int32_t bytes = 0;
    if (reader.GetSamples(request, &pcm, bytes, nullptr) != 1)
        return false;
    std::printf("samples: %u Hz, %d channels, %u samples in %d bytes\n",
                static_cast<unsigned>(info.audioFormat.nSamplesPerSec), info.audioFormat.nChannels,
                request.sampleCount, bytes);
    return true;
}

/// All slices of 20 ms as mono at 48 kHz.
bool ReadSlices(const std::wstring& file) {
    TRN_MpAudioFileReader reader;
    WAVEFORMATEX wanted = {};
    wanted.wFormatTag = 1;
    wanted.nChannels = 1;
    wanted.nSamplesPerSec = 48'000;
    wanted.wBitsPerSample = 16;
    wanted.nBlockAlign = 2;
    wanted.nAvgBytesPerSec = 96'000;
    if (reader.Initialize() != 1 || reader.SetPerPCMFrameTime(200'000) != 1 ||
        reader.SetOutputWAVEFormat(wanted) != 1 || reader.SetInputFile(file.c_str()) != 1 ||
        reader.StartRead() != 1)
        return false;
    unsigned char* data = nullptr; // belongs to the reader
    std::int32_t length = 0;
    std::int32_t atEnd = 0;
    WAVEFORMATEX format = {};
    int slices = 0;
    long long bytes = 0;
    for (; reader.ReadFrame(&data, length, &format, atEnd) == 1; ++slices)
        bytes += length;
    std::printf("slices: %d of 20 ms, %lld bytes, end %d\n", slices, bytes, atEnd);
    return slices > 0 && atEnd == 1;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: direct_link FILE\n");
        return 2;
    }
    const std::wstring file = std::filesystem::path(arguments[1]).wstring();
    if (BuildIndex(file) && ReadSamples(file) && ReadSlices(file))
        return 0;
    std::fprintf(stderr, "%s: something failed\n", arguments[1]);
    return 1;
}
