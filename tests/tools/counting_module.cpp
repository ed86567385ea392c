/// A reader module whose PCM tells where it comes from, for tests of its host: sample n of channel c is
/// test::CountedSample(n, c). It obeys a text file beside the media file, named as that with ".plan"
/// appended, of lines "key value":
///   rate, channels   of the PCM (44100, 2)
///   end              samples that there are; a request that crosses it is answered with silence
///   fail             ReadSamples fails from this sample on
///   delay            milliseconds that each ReadSamples takes
///   open             result of OpenFile (1)
///   indexOpen        result of OpenFile for the index builder (1)
///   indexEntries, indexDelay, indexState, indexCrash
///                    what CountingIndex::Plan says, the delay in milliseconds
///   slices           slices that TRN_MpAudioFileReader has
///   sliceFail        the first slice that it fails to read
/// The index builder finds the plan by the file, whatever name it is given. Each ReadSamples adds a line
/// "start count" to the file with ".requests" appended.

#include "index/index_format.h"
#include "os/output_file.h"
#include "os/paths.h"
#include "tools/counted_sample.h"
#include "tools/counting_index.h"
#include "tools/counting_plan.h"
#include "trnmediadet/media_info.h"
#include "trnmpafileread/plugin.h"

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

namespace {

using Plan = test::CountingPlan;

std::filesystem::path PathOf(const std::wstring& wide) {
    const std::string narrow = os::NarrowToUtf8(wide);
    return std::filesystem::path(std::u8string(narrow.begin(), narrow.end()));
}

std::wstring WideOf(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return os::WidenUtf8(std::string(text.begin(), text.end()));
}

/// The media file beside `path` that is the same and has a plan; `path` itself when there is none.
std::wstring PlannedName(const std::wstring& path) {
    const std::filesystem::path folder = std::filesystem::absolute(PathOf(path)).parent_path();
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::wstring name = WideOf(entry.path());
        const std::wstring media = name.substr(0, name.rfind(L'.'));
        if (name.ends_with(L".plan") && os::IsSameFile(media, path))
            return media;
    }
    return path;
}

class CountingReader : public PLUGIN_FILE_READER_CLASS {
public:
    std::int32_t GetClassInfo(PLUGIN_READER_CLASS_INFO*) override { return 0; }

    std::int32_t OpenFile(std::wstring path, std::uint32_t flags) override {
        if ((flags & TRN_OPEN_INDEX_BUILDER) != 0)
            return OpenIndex(path);
        plan_ = test::ReadCountingPlan(path);
        requests_.open(PathOf(path + L".requests"));
        return static_cast<std::int32_t>(plan_["open"]);
    }

    std::int32_t CreateFileIndex() override {
        index_->Build();
        return 1;
    }
    std::int32_t GetIndexProgress(std::int32_t, PLUGIN_INDEX_PROGRESS* record) override {
        *record = {};
        record->framesIndexed = index_->Frames();
        record->state = index_->State();
        return 1;
    }
    std::int32_t CancelIndexing() override {
        index_->Cancel();
        return 1;
    }

    std::int32_t GetFileInfo(std::int32_t kind, void* record) override {
        if (kind != TRN_FILE_INFO_SAMPLE_READER)
            return 0;
        WAVEFORMATEX& format = static_cast<KW_MEDIA_BASE_INFO_ST*>(record)->audioFormat;
        format.wFormatTag = 1;
        format.nChannels = static_cast<std::uint16_t>(plan_["channels"]);
        format.nSamplesPerSec = static_cast<std::uint32_t>(plan_["rate"]);
        format.wBitsPerSample = 16;
        format.nBlockAlign = static_cast<std::uint16_t>(2 * format.nChannels);
        return 1;
    }

    std::int32_t ClassReserved1() override { return 0; }

    std::int32_t ReadSamples(std::uint32_t, std::int64_t start, std::uint32_t count, unsigned char** data,
                             std::int32_t* size) override {
        requests_ << start << ' ' << count << std::endl;
        std::this_thread::sleep_for(std::chrono::milliseconds(plan_["delay"]));
        const std::int64_t end = start + count;
        if (end > plan_["fail"])
            return 0;
        const auto channels = static_cast<int>(plan_["channels"]);
        pcm_.clear();
        for (std::int64_t sample = start; sample < end; ++sample) {
            for (int channel = 0; channel < channels; ++channel)
                pcm_.push_back(end > plan_["end"] ? std::int16_t{0} : test::CountedSample(sample, channel));
        }
        *data = reinterpret_cast<unsigned char*>(pcm_.data());
        *size = static_cast<std::int32_t>(pcm_.size() * sizeof(std::int16_t));
        return 1;
    }

    std::int32_t ClassReserved2() override { return 0; }

private:
    std::int32_t OpenIndex(const std::wstring& path) {
        Plan plan = test::ReadCountingPlan(PlannedName(path));
        index_ = std::make_unique<test::CountingIndex>(
            PathOf(trnmpa::IndexPathFor(path)),
            test::CountingIndex::Plan{plan["indexEntries"], std::chrono::milliseconds(plan["indexDelay"]),
                                      static_cast<std::uint32_t>(plan["indexState"]),
                                      plan["indexCrash"] != 0});
        return static_cast<std::int32_t>(plan["indexOpen"]);
    }

    Plan plan_;
    std::unique_ptr<test::CountingIndex> index_;
    std::ofstream requests_;
    std::vector<std::int16_t> pcm_;
};

class CountingModule : public PLUGIN_FILE_READER_MODULE {
public:
    std::int32_t GetModuleInfo(PLUGIN_READER_MODULE_INFO* record) override {
        *record = {};
        std::memcpy(record->versionTag, "1000", sizeof record->versionTag);
        return 1;
    }
    std::int32_t GetClassIdForFile(std::wstring, std::int32_t* identifier) override {
        *identifier = 0;
        return 0;
    }
    std::int32_t ModuleReserved1() override { return 0; }
    std::int32_t CreateReaderClass(std::int32_t, PLUGIN_FILE_READER_CLASS** reader) override {
        *reader = new CountingReader;
        return 1;
    }
    std::int32_t ModuleReserved2() override { return 1; }
};

} // namespace

test::CountingPlan test::ReadCountingPlan(const std::wstring& media) {
    CountingPlan plan = {{"rate", 44100},
                         {"channels", 2},
                         {"end", std::numeric_limits<std::int64_t>::max()},
                         {"fail", std::numeric_limits<std::int64_t>::max()},
                         {"delay", 0},
                         {"open", 1},
                         {"indexOpen", 1},
                         {"indexEntries", 10},
                         {"indexDelay", 0},
                         {"indexState", 1},
                         {"indexCrash", 0},
                         {"slices", std::numeric_limits<std::int64_t>::max()},
                         {"sliceFail", std::numeric_limits<std::int64_t>::max()}};
    std::ifstream file(PathOf(media + L".plan"));
    std::string key;
    std::int64_t value = 0;
    while (file >> key >> value)
        plan[key] = value;
    return plan;
}

extern "C" TRN_EXPORT PLUGIN_FILE_READER_MODULE* GetPluginReadModule() {
    return new CountingModule;
}
