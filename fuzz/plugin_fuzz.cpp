/// The plug-in's objects, their calls in any order with any flags, before, between and after OpenFile.
#include "harness/media.h"
#include "harness/sample_script.h"

#include "plugin/plugin_module.h"
#include "trnmediadet/media_info.h"

#include <memory>

namespace {

using fuzz::Input;
using fuzz::Require;
using fuzz::Watched;

class Host {
public:
    Host(fuzz::View first, fuzz::View second) : media_{{first, "first.mp3"}, {second, "second.mp2"}} {}

    void Step(Input& script) {
        const std::uint8_t operation = script.U8() % 16;
        if (reader_ == nullptr || operation == 0)
            return Create(script);
        if (operation < 4)
            return Open(script);
        if (operation < 8)
            return Read(script);
        switch (operation) {
        case 8:
            Require(
                IsTruth(Watched("CreateFileIndex", AllWork(), [&] { return reader_->CreateFileIndex(); })),
                "CreateFileIndex");
            break;
        case 9:
            Require(IsTruth(Watched("CancelIndexing", AllWork(), [&] { return reader_->CancelIndexing(); })),
                    "CancelIndexing");
            break;
        case 10:
            Progress(script.U8());
            break;
        case 11:
            Identities(script);
            break;
        case 12:
            media_[script.U8() % 2].Rewrite({});
            break;
        case 13:
            // A builder that is open writes on into the file that was there.
            media_[script.U8() % 2].PutIndex(script.Take(script.U8()));
            break;
        default:
            Describe(script.U8());
            break;
        }
    }

private:
    static bool IsTruth(std::int32_t result) { return result == 0 || result == 1; }

    fuzz::Work AllWork(std::size_t answerBytes = 0) const {
        const fuzz::Work first = media_[0].WorkFor(answerBytes);
        const fuzz::Work second = media_[1].WorkFor();
        fuzz::Work work;
        work.inputBytes = first.inputBytes + second.inputBytes;
        work.indexEntries = first.indexEntries + second.indexEntries;
        work.answerBytes = answerBytes;
        return work;
    }

    void Create(Input& script) {
        reader_.reset();
        constexpr std::int32_t kIdentifiers[] = {2321, 2322, 2323, 2323, 0, 2324, -1};
        PLUGIN_FILE_READER_CLASS* reader = nullptr;
        const std::int32_t identifier = script.Choose(kIdentifiers);
        const std::int32_t created = Watched("CreateReaderClass", AllWork(),
                                             [&] { return module_.CreateReaderClass(identifier, &reader); });
        reader_.reset(reader);
        Require((created == 1) == (identifier >= 2321 && identifier <= 2323), "CreateReaderClass");
        Require((reader != nullptr) == (created == 1), "a reader");
        Require(module_.CreateReaderClass(identifier, nullptr) == 0, "a reader for nobody");
    }

    void Open(Input& script) {
        const std::uint8_t choice = script.U8();
        // Mostly the flags that mean something.
        const std::uint32_t flags = choice < 0xF0 ? choice & 15u : script.U32();
        const std::uint8_t which = script.U8() % 8;
        const std::wstring path = which < 7 ? media_[which % 2].Path() : media_[0].Path() + L".none";
        const std::int32_t result =
            Watched("OpenFile", AllWork(), [&] { return reader_->OpenFile(path, flags); });
        Require(IsTruth(result) || result == TRN_OPEN_VARIABLE_BIT_RATE, "OpenFile");
        Require((flags & 15) != 0 || result == 1, "nothing to open fails");
    }

    /// Completes an open that OpenFile did not.
    std::int32_t Described(KW_MEDIA_BASE_INFO_ST* info) {
        return Watched("GetFileInfo", AllWork(),
                       [&] { return reader_->GetFileInfo(TRN_FILE_INFO_SAMPLE_READER, info); });
    }

    void Read(Input& script) {
        const std::int64_t start = fuzz::TakeSamplePosition(script);
        const std::uint32_t count = fuzz::TakeSampleCount(script);
        unsigned char* data = nullptr;
        std::int32_t size = 0;
        KW_MEDIA_BASE_INFO_ST info;
        const bool described = Described(&info) == 1;
        const std::size_t answer = described ? std::size_t{count} * info.audioFormat.nBlockAlign : 0;
        if (!fuzz::IsWorthARead(answer))
            return;
        const std::int32_t result = Watched("ReadSamples", AllWork(answer < (1u << 31) ? answer : 0), [&] {
            return reader_->ReadSamples(count, start, count, &data, &size);
        });
        Require(IsTruth(result), "ReadSamples");
        Require(result == 0 || described, "samples of nothing");
        if (result == 1) {
            Require(static_cast<std::size_t>(size) == answer, "a read gives another size");
            fuzz::Touch({data, answer});
        }
        Require(reader_->ReadSamples(0, start, count, nullptr, &size) == 0, "samples for nobody");
        Require(reader_->ReadSamples(0, start, count, &data, nullptr) == 0, "samples without a size");
    }

    void Progress(std::int32_t kind) {
        PLUGIN_INDEX_PROGRESS progress = {};
        const std::int32_t result = reader_->GetIndexProgress(kind, &progress);
        Require(IsTruth(result) && (kind == TRN_INDEX_PROGRESS_RECORD || result == 0), "GetIndexProgress");
        Require(reader_->GetIndexProgress(kind, nullptr) == 0, "progress for nobody");
    }

    void Describe(std::uint8_t kind) {
        KW_MEDIA_BASE_INFO_ST first;
        TRN_MEDIA_INFO2 second;
        Require(IsTruth(reader_->GetFileInfo(TRN_FILE_INFO_PROBE, &second)), "the probe's information");
        Require(Described(&first) <= 1, "the reader's information");
        if (kind != TRN_FILE_INFO_PROBE && kind != TRN_FILE_INFO_SAMPLE_READER)
            Require(reader_->GetFileInfo(kind, &first) == 0, "information of another kind");
        Require(reader_->GetFileInfo(kind, nullptr) == 0, "information for nobody");
    }

    void Identities(Input& script) {
        PLUGIN_READER_MODULE_INFO module = {};
        PLUGIN_READER_CLASS_INFO reader = {};
        Require(module_.GetModuleInfo(&module) == 1 && module_.GetModuleInfo(nullptr) == 0, "GetModuleInfo");
        Require(reader_->GetClassInfo(&reader) == 1 && reader_->GetClassInfo(nullptr) == 0, "GetClassInfo");
        Require(reader.classIdentifier == 2322, "the class is always 2322");
        std::wstring path = L"a.";
        for (const std::uint8_t byte : script.Take(4))
            path += static_cast<wchar_t>(byte);
        std::int32_t identifier = -1;
        const std::int32_t served = module_.GetClassIdForFile(path, &identifier);
        Require(served == (identifier != 0 ? 1 : 0) && identifier >= 0, "GetClassIdForFile");
        Require(module_.GetClassIdForFile(path, nullptr) == 0, "an identifier for nobody");
        Require(module_.ModuleReserved1() == 0 && module_.ModuleReserved2() == 1, "reserved");
        Require(reader_->ClassReserved1() == 0 && reader_->ClassReserved2() == 0, "reserved of the class");
    }

    fuzz::Media media_[2];
    trnmpa::kwMpaPluginReaderModule module_;
    std::unique_ptr<PLUGIN_FILE_READER_CLASS> reader_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input({data, size});
    Input script(input.Part());
    const fuzz::View second = input.Part();
    Host host(input.Rest(), second);
    while (!script.IsEmpty())
        host.Step(script);
    return 0;
}
