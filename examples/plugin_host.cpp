// A host that loads the module at run time: lists what the module handles, then decodes a stretch of a file.
//
//     plugin_host MODULE FILE [START COUNT]
//
// MODULE is libtrnmpafileread.so or trnmpafileread.dll; START and COUNT are samples per channel.

#include "trnmpafileread/plugin.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

GetPluginReadModuleFunction LoadEntry(const std::filesystem::path& path) {
#if defined(_WIN32)
    HMODULE library = LoadLibraryW(path.c_str());
    if (library == nullptr)
        return nullptr;
    // By way of void(*)(): the types of the two have nothing in common.
    return reinterpret_cast<GetPluginReadModuleFunction>(
        reinterpret_cast<void (*)()>(GetProcAddress(library, "GetPluginReadModule")));
#else
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        return nullptr;
    return reinterpret_cast<GetPluginReadModuleFunction>(dlsym(library, "GetPluginReadModule"));
#endif
}

void ListModule(PLUGIN_FILE_READER_MODULE& module) {
    PLUGIN_READER_MODULE_INFO info = {};
    if (module.GetModuleInfo(&info) != 1)
        return;
    std::printf("%s, version %.4s, handles class identifiers", info.name, info.versionTag);
    for (std::uint32_t i = 0; i < info.classIdentifierCount; ++i)
        std::printf(" %d", info.classIdentifiers[i]);
    std::printf("\n");
}

std::unique_ptr<PLUGIN_FILE_READER_CLASS> OpenReader(PLUGIN_FILE_READER_MODULE& module,
                                                     const std::wstring& file) {
    std::int32_t identifier = 0;
    if (module.GetClassIdForFile(file, &identifier) != 1)
        return nullptr;
    PLUGIN_FILE_READER_CLASS* reader = nullptr;
    if (module.CreateReaderClass(identifier, &reader) != 1)
        return nullptr;
    std::unique_ptr<PLUGIN_FILE_READER_CLASS> owned(reader);
    if (owned == nullptr || owned->OpenFile(file, TRN_OPEN_SAMPLE_READER) != 1)
        return nullptr;
    return owned;
}

int Decode(PLUGIN_FILE_READER_CLASS& reader, std::int64_t start, std::uint32_t count) {
    unsigned char* pcm = nullptr; // belongs to the reader
    std::int32_t bytes = 0;
    if (reader.ReadSamples(0, start, count, &pcm, &bytes) != 1) {
        std::fprintf(stderr, "the read failed\n");
        return 1;
    }
    long long sum = 0;
    for (std::int32_t i = 0; i + 1 < bytes; i += 2)
        sum += std::abs(static_cast<std::int16_t>(pcm[i] | pcm[i + 1] << 8));
    std::printf("%u samples from %lld on: %d bytes, mean level %lld\n", count, static_cast<long long>(start),
                bytes, bytes >= 2 ? sum / (bytes / 2) : 0);
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 3 && count != 5) {
        std::fprintf(stderr, "usage: plugin_host MODULE FILE [START COUNT]\n");
        return 2;
    }
    const GetPluginReadModuleFunction entry = LoadEntry(arguments[1]);
    if (entry == nullptr) {
        std::fprintf(stderr, "%s is no reader module\n", arguments[1]);
        return 1;
    }
    const std::unique_ptr<PLUGIN_FILE_READER_MODULE> module(entry());
    if (module == nullptr)
        return 1;
    ListModule(*module);
    const auto reader = OpenReader(*module, std::filesystem::path(arguments[2]).wstring());
    if (reader == nullptr) {
        std::fprintf(stderr, "%s cannot be opened\n", arguments[2]);
        return 1;
    }
    const std::int64_t start = count == 5 ? std::atoll(arguments[3]) : 0;
    const auto samples = static_cast<std::uint32_t>(count == 5 ? std::atoll(arguments[4]) : 44100);
    return Decode(*reader, start, samples);
}
