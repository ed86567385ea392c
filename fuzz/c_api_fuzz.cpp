/// The plain C functions over a media file and perhaps an index: records of any size, any requests and
/// options, calls in any order.
#include "harness/media.h"
#include "harness/sample_script.h"

#include "os/paths.h"
#include "trnmpafileread/c_api.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using fuzz::Input;
using fuzz::Require;
using fuzz::Watched;

constexpr std::uint64_t kMostBytes = 1 << 22;

bool IsResult(trnmpa_result result) {
    return result <= TRNMPA_END && result >= TRNMPA_ERROR_UNEXPECTED;
}

/// A caller's record in a block of just the size that it claims, up to what is never accepted.
template <typename Record>
class Claimed {
public:
    explicit Claimed(Input& script) {
        constexpr std::uint32_t kSizes[] = {sizeof(Record),
                                            sizeof(Record),
                                            sizeof(Record),
                                            sizeof(Record) + 16,
                                            4096,
                                            4097,
                                            sizeof(Record) - 1,
                                            4,
                                            0};
        const std::uint32_t size = script.Choose(kSizes);
        isUsable_ = size >= sizeof(Record) && size <= 4096;
        bytes_ = std::make_unique<std::uint8_t[]>(std::max<std::size_t>(size, sizeof size));
        std::memcpy(bytes_.get(), &size, sizeof size);
    }

    bool IsUsable() const { return isUsable_; }
    Record* Get() { return reinterpret_cast<Record*>(bytes_.get()); }

private:
    std::unique_ptr<std::uint8_t[]> bytes_;
    bool isUsable_ = false;
};

class Host {
public:
    explicit Host(fuzz::Media& media) : media_(media), utf8_(os::NarrowToUtf8(media.Path())) {
        for (const char byte : utf8_)
            utf16_.push_back(static_cast<std::uint8_t>(byte));
        utf16_.push_back(0);
    }

    void Step(Input& script) {
        switch (script.U8() % 10) {
        case 0:
            return OpenReader(script.U8());
        case 1:
            return OpenSlices(script);
        case 2:
            return Describe(script);
        case 3:
            return BuildIndex(script);
        case 4:
            return OpenForeignPath(script);
        case 5:
        case 6:
            return Next(script);
        default:
            return Read(script);
        }
    }

private:
    struct Close {
        void operator()(trnmpa_reader* reader) const { trnmpa_reader_close(reader); }
        void operator()(trnmpa_slices* slices) const { trnmpa_slices_close(slices); }
    };

    void OpenReader(std::uint8_t way) {
        reader_.reset();
        trnmpa_reader* reader = nullptr;
        const trnmpa_result result = Watched("trnmpa_reader_open", media_.WorkFor(), [&] {
            return way % 2 == 0 ? trnmpa_reader_open_utf8(utf8_.c_str(), &reader)
                                : trnmpa_reader_open_utf16(utf16_.data(), &reader);
        });
        Require(IsResult(result) && (reader != nullptr) == (result == TRNMPA_OK), "trnmpa_reader_open");
        reader_.reset(reader);
    }

    void Describe(Input& script) {
        Claimed<trnmpa_info> info(script);
        const trnmpa_result result = trnmpa_reader_info(reader_.get(), info.Get());
        const bool isGood = reader_ != nullptr && info.IsUsable();
        Require(result == (isGood ? TRNMPA_OK : TRNMPA_ERROR_ARGUMENT), "trnmpa_reader_info");
        Require(!isGood || (info.Get()->length >= -1 && info.Get()->duration >= -1), "a length");
    }

    void Read(Input& script) {
        trnmpa_info info = {};
        info.struct_size = sizeof info;
        trnmpa_reader_info(reader_.get(), &info);
        const std::int64_t start = fuzz::TakeSamplePosition(script);
        const std::uint32_t count = fuzz::TakeSampleCount(script);
        const std::uint64_t needed = std::uint64_t{count} * info.block_bytes;
        // Less than what is needed, too.
        const std::uint64_t bytes = std::min(script.U8() < 0xF0 ? needed : needed / 2, kMostBytes);
        const auto buffer = std::make_unique<std::uint8_t[]>(bytes);
        Claimed<trnmpa_read_result> found(script);
        const trnmpa_result result =
            Watched("trnmpa_reader_read", media_.WorkFor(static_cast<std::size_t>(bytes)), [&] {
                return trnmpa_reader_read(reader_.get(), start, count, buffer.get(), bytes, found.Get());
            });
        Require(IsResult(result) && result != TRNMPA_END, "trnmpa_reader_read");
        if (result != TRNMPA_OK)
            return;
        Require(found.IsUsable() && needed <= bytes, "a bad request succeeds");
        Require(found.Get()->samples <= count && found.Get()->end >= -1, "more than was asked for");
        Require(found.Get()->at_end == 1 || found.Get()->samples == count, "less than was asked for");
        fuzz::Touch({buffer.get(), static_cast<std::size_t>(needed)});
    }

    void OpenSlices(Input& script) {
        constexpr std::uint32_t kRates[] = {0, 0, 8000, 44100, 48000, 172, 1, 11'289'600, 0xFFFFFFFF};
        constexpr std::int64_t kTimes[] = {0, 10'000, 400'000, 1, -1, 1'000'000, INT64_MAX};
        constexpr std::uint32_t kBits[] = {0, 8, 16, 24, 32, 12, 64};
        slices_.reset();
        Claimed<trnmpa_slice_options> options(script);
        if (options.IsUsable()) {
            options.Get()->sample_rate = script.Choose(kRates);
            options.Get()->slice_time = script.Choose(kTimes);
            options.Get()->channels = script.U8() % 4;
            options.Get()->bits_per_sample = script.Choose(kBits);
        }
        trnmpa_slices* slices = nullptr;
        const trnmpa_result result = Watched("trnmpa_slices_open", media_.WorkFor(), [&] {
            return trnmpa_slices_open_utf8(utf8_.c_str(), options.Get(), &slices);
        });
        Require(IsResult(result) && (slices != nullptr) == (result == TRNMPA_OK), "trnmpa_slices_open");
        slices_.reset(slices);
    }

    void Next(Input& script) {
        const bool isThere = slices_ != nullptr;
        if (script.U8() % 2 != 0)
            Require(trnmpa_slices_seek(slices_.get(), script.U32() % 64) ==
                        (isThere ? TRNMPA_OK : TRNMPA_ERROR_ARGUMENT),
                    "trnmpa_slices_seek");
        Claimed<trnmpa_slice> slice(script);
        // A tenth of a second of 8 bytes at 11 MHz; of longer slices the file has nothing.
        fuzz::Work work = media_.WorkFor(10 << 20);
        work.convertedBytes = 10 << 20;
        const trnmpa_result result = Watched("trnmpa_slices_next", work,
                                             [&] { return trnmpa_slices_next(slices_.get(), slice.Get()); });
        Require(IsResult(result), "trnmpa_slices_next");
        if (result != TRNMPA_OK)
            return;
        Require(isThere && slice.IsUsable(), "a bad request succeeds");
        const trnmpa_slice& given = *slice.Get();
        Require((given.data != nullptr) == (given.bytes != 0) && given.at_end == 0, "a slice without bytes");
        fuzz::Touch({static_cast<const std::uint8_t*>(given.data), given.bytes});
    }

    void BuildIndex(Input& script) {
        int callsLeft = script.U8() % 4;
        const auto hear = [](void* user, const trnmpa_index_progress* progress) -> std::int32_t {
            Require(progress->bytes_done <= progress->bytes_total, "progress beyond the end");
            return (*static_cast<int*>(user))-- == 0 ? 1 : 0;
        };
        const fuzz::Bytes before = media_.IndexOnDisk();
        Claimed<trnmpa_index_progress> reached(script);
        const trnmpa_result result = Watched("trnmpa_index_build", media_.WorkFor(), [&] {
            return trnmpa_index_build_utf8(utf8_.c_str(), hear, &callsLeft, reached.Get());
        });
        Require(IsResult(result) && result != TRNMPA_END, "trnmpa_index_build");
        Require(result == TRNMPA_OK || media_.IndexOnDisk() == before, "a failed build changes the index");
        Require(result != TRNMPA_OK || !media_.IndexOnDisk().empty(), "no index was built");
    }

    /// Paths that lead nowhere, whatever the input says, ended by a zero in a block of just their size.
    void OpenForeignPath(Input& script) {
        std::vector<std::uint16_t> units(utf16_.begin(), utf16_.end() - 1);
        units.insert(units.end(), {'.', 'n', 'o', 'n', 'e', '/'});
        const bool isUtf8 = script.U8() % 2 == 0;
        for (int left = script.U8() % 64; left > 0; --left)
            units.push_back(isUtf8 ? script.U8() : script.U16());
        units.push_back(0);
        const auto bytes = std::make_unique<char[]>(units.size());
        std::ranges::transform(units, bytes.get(),
                               [](std::uint16_t unit) { return static_cast<char>(unit); });
        const auto exact = std::make_unique<std::uint16_t[]>(units.size());
        std::ranges::copy(units, exact.get());
        trnmpa_reader* reader = nullptr;
        const trnmpa_result result = isUtf8 ? trnmpa_reader_open_utf8(bytes.get(), &reader)
                                            : trnmpa_reader_open_utf16(exact.get(), &reader);
        Require((result == TRNMPA_ERROR_FILE || result == TRNMPA_ERROR_PATH) && reader == nullptr,
                "a path that leads nowhere");
        Require(trnmpa_reader_open_utf8("", &reader) == TRNMPA_ERROR_PATH, "an empty path");
    }

    fuzz::Media& media_;
    std::string utf8_;
    std::vector<std::uint16_t> utf16_;
    std::unique_ptr<trnmpa_reader, Close> reader_;
    std::unique_ptr<trnmpa_slices, Close> slices_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input({data, size});
    const bool hasIndex = (input.U8() & 1) != 0;
    Input script(input.Part());
    const fuzz::View index = hasIndex ? input.Part() : fuzz::View();
    const fuzz::View bytes = input.Rest();
    fuzz::Media media(bytes);
    if (hasIndex)
        media.PutIndex(index);
    Host host(media);
    while (!script.IsEmpty())
        host.Step(script);
    return 0;
}
