#include "faults/module_walk_call.h"

#include "trnmpafileread/audio_reader.h"
#include "trnmpafileread/frame_readers.h"
#include "trnmpafileread/index_creator.h"
#include "trnmpafileread/video_reader_base.h"

#include <array>
#include <optional>
#include <utility>

namespace test {

namespace {

/// A walk over an object of an exported class.
template <typename Class>
class ClassWalk : public ModuleWalk {
protected:
    explicit ClassWalk(std::string className, const std::filesystem::path& media = {})
        : className_(std::move(className)), path_(os::ToAutomationString(Wide(media))) {}

    std::string_view Name() const override { return className_; }

    template <typename Operation>
    std::int32_t Ask(const std::string& operation, StepKind kind, Operation&& call) {
        return Call(className_ + "::" + operation, kind, std::forward<Operation>(call));
    }

    void Construct(std::optional<Class>& object, StepKind kind = StepKind::kObject) {
        Ask(className_, kind, [&] {
            object.emplace();
            return 1;
        });
    }

    /// A copy and an assigned object come and go.
    void Copy(const Class& object) {
        std::optional<Class> copy;
        Ask(className_, StepKind::kObject, [&] {
            copy.emplace(object);
            return 1;
        });
        std::optional<Class> other;
        Construct(other);
        Ask("operator=", StepKind::kObject, [&] {
            *other = *copy;
            *copy = *other;
            return 1;
        });
        Destroy(copy);
        Destroy(other);
    }

    void Destroy(std::optional<Class>& object) {
        Ask("~" + className_, StepKind::kObject, [&] {
            object.reset();
            return 1;
        });
    }

    /// An argument by value, made outside of the window.
    std::int32_t SetInputFile(Class& object, StepKind kind) {
        CComBSTR path = path_;
        return Ask("SetInputFile", kind, [&] { return object.SetInputFile(std::move(path)); });
    }

    std::string className_;
    CComBSTR path_;
    std::optional<Class> object_;
};

class SamplesWalk final : public ClassWalk<TRN_MpAudioFileReader2> {
public:
    explicit SamplesWalk(const std::filesystem::path& media) : ClassWalk("TRN_MpAudioFileReader2", media) {}

private:
    void Walk() override {
        if (!object_)
            Construct(object_);
        Ask("Initialize", StepKind::kOpen, [this] { return object_->Initialize(); });
        SetInputFile(*object_, StepKind::kOpen);
        for (const auto operation : {&TRN_MpAudioFileReader2::AddRef, &TRN_MpAudioFileReader2::GetRef})
            Ask(operation == &TRN_MpAudioFileReader2::AddRef ? "AddRef" : "GetRef", StepKind::kObject,
                [&] { return (*object_.*operation)(); });
        Ask("ConfigureObj", StepKind::kObject,
            [this] { return object_->ConfigureObj(0, nullptr, 0, nullptr, 0); });
        KW_MEDIA_BASE_INFO_ST info;
        Ask("GetItemInfo", StepKind::kOpen, [&] { return object_->GetItemInfo(&info); });
        Data(&info.audioFormat, sizeof info.audioFormat);
        Copy(*object_);
        for (const std::int64_t start : {0, 400, 25'000, 44'800, 1'000'000, 500})
            ReadSamples(start);
        std::optional<TRN_MpAudioFileReader2> copy = object_;
        Ask("Release", StepKind::kObject, [&] { return copy->Release(); });
    }

    void ReadSamples(std::int64_t start) {
        AudioReaderDataIn request;
        request.startSample = start;
        request.sampleCount = 400;
        unsigned char* data = nullptr;
        std::int32_t size = 0;
        Ask("GetSamples", StepKind::kSamples,
            [&] { return object_->GetSamples(std::move(request), &data, size, nullptr); });
        Data(data, static_cast<std::size_t>(size));
    }
};

class SlicesWalk final : public ClassWalk<TRN_MpAudioFileReader> {
public:
    SlicesWalk(const std::filesystem::path& media, bool converts)
        : ClassWalk("TRN_MpAudioFileReader", media), converts_(converts) {}

private:
    void Walk() override {
        if (!object_)
            Construct(object_);
        Ask("Initialize", StepKind::kOpen, [this] { return object_->Initialize(); });
        Ask("SetPerPCMFrameTime", StepKind::kOpen, [this] { return object_->SetPerPCMFrameTime(200'000); });
        SetInputFile(*object_, StepKind::kOpen);
        WAVEFORMATEX format = {};
        if (converts_)
            format = {.wFormatTag = 1,
                      .nChannels = 1,
                      .nSamplesPerSec = 48'000,
                      .nAvgBytesPerSec = 96'000,
                      .nBlockAlign = 2,
                      .wBitsPerSample = 16,
                      .cbSize = 0};
        Ask("SetOutputWAVEFormat", StepKind::kOpen, [&] { return object_->SetOutputWAVEFormat(format); });
        Ask("StartRead", StepKind::kOpen, [this] { return object_->StartRead(); });
        WAVEFORMATEX original = {};
        Ask("GetOriginalStreamInfo", StepKind::kOpen,
            [&] { return object_->GetOriginalStreamInfo(original); });
        Data(&original, sizeof original);
        Copy(*object_);
        ReadSlice();
        ReadSlice();
        for (const std::uint32_t slice : {24U, 1U, 10'000U, 9U}) {
            Ask("SeekTo", StepKind::kSeek, [&] { return object_->SeekTo(slice); });
            ReadSlice();
        }
        Ask("StopRead", StepKind::kOpen, [this] { return object_->StopRead(); });
    }

    void ReadSlice() {
        unsigned char* data = nullptr;
        std::int32_t length = 0;
        std::int32_t atEnd = 0;
        WAVEFORMATEX format = {};
        Ask("ReadFrame", StepKind::kSlice, [&] { return object_->ReadFrame(&data, length, &format, atEnd); });
        Data(data, static_cast<std::size_t>(length));
        Data(&atEnd, sizeof atEnd);
    }

    bool converts_;
};

class PlacesWalk final : public ClassWalk<TRN_MpaFileCompReader> {
public:
    explicit PlacesWalk(const std::filesystem::path& media) : ClassWalk("TRN_MpaFileCompReader", media) {}

private:
    void Walk() override {
        // What construction could not make is not made later.
        Construct(object_, StepKind::kOpen);
        Ask("Initialize", StepKind::kObject, [this] { return object_->Initialize(); });
        SetInputFile(*object_, StepKind::kOpen);
        Ask("StartRead", StepKind::kOpen, [this] { return object_->StartRead(); });
        tag_KW_MpaStreamInfo info = {};
        Ask("GetOriginalStreamInfo", StepKind::kOpen, [&] { return object_->GetOriginalStreamInfo(info); });
        Data(&info, sizeof info);
        Copy(*object_);
        for (const std::int64_t time : {0, 2'000'000, 100'000'000}) {
            unsigned long position = 0;
            Ask("SeekTo", StepKind::kOpen, [&] { return object_->SeekTo(time, position); });
            Data(&position, sizeof position);
        }
        std::array<unsigned char, 16> buffer = {};
        std::int32_t length = 16;
        Ask("ReadAudioSample", StepKind::kObject,
            [&] { return object_->ReadAudioSample(buffer.data(), length); });
        Ask("StopRead", StepKind::kObject, [this] { return object_->StopRead(); });
    }
};

class BuilderWalk final : public ClassWalk<TRN_MpaFileIndexCreator> {
public:
    explicit BuilderWalk(const std::filesystem::path& media) : ClassWalk("TRN_MpaFileIndexCreator", media) {}

private:
    void Walk() override {
        if (!object_)
            Construct(object_);
        Ask("Initialize", StepKind::kIndex, [this] { return object_->Initialize(); });
        SetInputFile(*object_, StepKind::kIndex);
        Copy(*object_);
        Progress();
        Ask("CreateFileIndex", StepKind::kIndex, [this] { return object_->CreateFileIndex(); });
        Progress();
        Ask("CancelIndexing", StepKind::kIndex, [this] { return object_->CancelIndexing(); });
    }

    void Progress() {
        PROGRESS_INFO progress = {};
        Ask("GetFileIdxingProgress", StepKind::kIndex,
            [&] { return object_->GetFileIdxingProgress(progress); });
        Data(&progress, sizeof progress);
    }
};

class VideoBaseWalk final : public ClassWalk<ITRN_VIDEO_READER_BASE> {
public:
    VideoBaseWalk() : ClassWalk("ITRN_VIDEO_READER_BASE") {}

private:
    void Walk() override {
        Construct(object_);
        Copy(*object_);
        Destroy(object_);
    }
};

} // namespace

std::unique_ptr<ModuleWalk> WalkSamples(const std::filesystem::path& media) {
    return std::make_unique<SamplesWalk>(media);
}

std::unique_ptr<ModuleWalk> WalkSlices(const std::filesystem::path& media, bool converts) {
    return std::make_unique<SlicesWalk>(media, converts);
}

std::unique_ptr<ModuleWalk> WalkPlaces(const std::filesystem::path& media) {
    return std::make_unique<PlacesWalk>(media);
}

std::unique_ptr<ModuleWalk> WalkBuilder(const std::filesystem::path& media) {
    return std::make_unique<BuilderWalk>(media);
}

std::unique_ptr<ModuleWalk> WalkBases() {
    return std::make_unique<VideoBaseWalk>();
}

void MeetFirstException() {
    const FaultLayer layer(Fault{SystemCall::kAllocate, 0, FaultLength::kOnce});
    TRN_MpaFileIndexCreator creator;
    const FaultLayer::Window window;
    creator.Initialize();
}

} // namespace test
