#include "faults/module_walk_call.h"
#include "trnmpafileread/c_api.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace test {

namespace {

/// A record of zeros with its size set.
template <typename Record>
Record Sized() {
    Record record = {};
    record.struct_size = sizeof record;
    return record;
}

class CWalk final : public ModuleWalk {
public:
    explicit CWalk(const std::filesystem::path& media) {
        const std::u8string utf8 = media.u8string();
        utf8_.assign(utf8.begin(), utf8.end());
        const std::u16string utf16 = media.u16string();
        utf16_.assign(utf16.begin(), utf16.end());
        utf16_.push_back(0);
    }

private:
    std::string_view Name() const override { return "trnmpa"; }

    void Walk() override {
        Questions();
        ReadSamples("trnmpa_reader_open_utf8", &trnmpa_reader_open_utf8, utf8_.c_str());
        ReadSamples("trnmpa_reader_open_utf16", &trnmpa_reader_open_utf16, utf16_.data());
        ReadSlices("trnmpa_slices_open_utf8", &trnmpa_slices_open_utf8, utf8_.c_str(), 0);
        ReadSlices("trnmpa_slices_open_utf16", &trnmpa_slices_open_utf16, utf16_.data(), 48'000);
        // Last, as it changes what the others find.
        BuildIndex("trnmpa_index_build_utf8", &trnmpa_index_build_utf8, utf8_.c_str());
        BuildIndex("trnmpa_index_build_utf16", &trnmpa_index_build_utf16, utf16_.data());
    }

    void Questions() {
        const auto ask = [this](std::string name, auto question) {
            Call(std::move(name), StepKind::kObject, [&] { return static_cast<std::int32_t>(question()); });
        };
        ask("trnmpa_api_version", [] { return trnmpa_api_version(); });
        ask("trnmpa_kernels_available", [] { return trnmpa_kernels_available(); });
        ask("trnmpa_use_kernels", [] { return trnmpa_use_kernels(TRNMPA_KERNELS_ALL); });
        const char* text = nullptr;
        ask("trnmpa_error_text", [&] {
            text = trnmpa_error_text(TRNMPA_ERROR_FILE);
            return 0;
        });
        Data(text, std::string_view(text).size());
    }

    template <typename Open, typename Path>
    void ReadSamples(const char* name, Open open, const Path* path) {
        trnmpa_reader* reader = nullptr;
        if (Call(name, StepKind::kOpen, [&] { return open(path, &reader); }) == TRNMPA_OK) {
            auto info = Sized<trnmpa_info>();
            Call("trnmpa_reader_info", StepKind::kOpen, [&] { return trnmpa_reader_info(reader, &info); });
            Data(&info, sizeof info);
            for (const std::int64_t start : {0, 400, 25'000, 44'800, 1'000'000, 500})
                ReadStretch(*reader, start);
        }
        Close("trnmpa_reader_close", [&] { trnmpa_reader_close(reader); });
    }

    void ReadStretch(trnmpa_reader& reader, std::int64_t start) {
        constexpr std::uint32_t kSamples = 400;
        std::vector<std::int16_t> pcm(std::size_t{kSamples} * 2, std::int16_t{0x5555});
        const std::size_t bytes = pcm.size() * sizeof(std::int16_t);
        auto read = Sized<trnmpa_read_result>();
        const std::int32_t code = Call("trnmpa_reader_read", StepKind::kSamples, [&] {
            return trnmpa_reader_read(&reader, start, kSamples, pcm.data(), bytes, &read);
        });
        if (code == TRNMPA_OK)
            Data(pcm.data(), bytes);
    }

    template <typename Open, typename Path>
    void ReadSlices(const char* name, Open open, const Path* path, std::uint32_t rate) {
        auto options = Sized<trnmpa_slice_options>();
        options.slice_time = 200'000;
        options.sample_rate = rate;
        trnmpa_slices* slices = nullptr;
        if (Call(name, StepKind::kOpen, [&] { return open(path, &options, &slices); }) == TRNMPA_OK) {
            ReadSlice(*slices);
            for (const std::uint32_t number : {24U, 1U, 10'000U, 9U}) {
                Call("trnmpa_slices_seek", StepKind::kSeek,
                     [&] { return trnmpa_slices_seek(slices, number); });
                ReadSlice(*slices);
            }
        }
        Close("trnmpa_slices_close", [&] { trnmpa_slices_close(slices); });
    }

    void ReadSlice(trnmpa_slices& slices) {
        auto slice = Sized<trnmpa_slice>();
        Call("trnmpa_slices_next", StepKind::kSlice, [&] { return trnmpa_slices_next(&slices, &slice); });
        Data(slice.data, slice.bytes);
        Data(&slice.at_end, sizeof slice.at_end);
    }

    template <typename Build, typename Path>
    void BuildIndex(const char* name, Build build, const Path* path) {
        auto reached = Sized<trnmpa_index_progress>();
        const trnmpa_progress_function goOn = [](void*, const trnmpa_index_progress*) -> std::int32_t {
            return 0;
        };
        Call(name, StepKind::kIndex, [&] { return build(path, goOn, nullptr, &reached); });
        Data(&reached, sizeof reached);
    }

    template <typename Operation>
    void Close(const char* name, Operation&& close) {
        Call(name, StepKind::kClose, [&] {
            close();
            return 0;
        });
    }

    std::string utf8_;
    std::vector<std::uint16_t> utf16_;
};

} // namespace

std::unique_ptr<ModuleWalk> WalkC(const std::filesystem::path& media) {
    return std::make_unique<CWalk>(media);
}

} // namespace test
