#include "mpatool/selftest/checks.h"
#include "mpatool/selftest/streams.h"
#include "os/paths.h"
#include "trnmediadet/media_info.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace mpatool {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kRequest = 1000;

/// The samples from `start` on; empty when the module does not give all of them.
Bytes Read(PLUGIN_FILE_READER_CLASS& reader, std::int64_t start, std::uint32_t count,
           std::uint16_t channels) {
    unsigned char* data = nullptr;
    std::int32_t bytes = 0;
    if (reader.ReadSamples(0, start, count, &data, &bytes) != 1 || data == nullptr ||
        bytes != static_cast<std::int32_t>(count * channels * sizeof(std::int16_t)))
        return {};
    return {data, data + bytes};
}

Bytes ReadAll(PLUGIN_FILE_READER_CLASS& reader, const SelftestStream& stream) {
    Bytes all;
    for (std::int64_t start = 0; start < stream.samples; start += kRequest) {
        const Bytes part = Read(reader, start, kRequest, stream.channels);
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

std::string DigestOf(const Bytes& pcm) {
    PcmDigest digest;
    digest.Add(pcm);
    return digest.Text();
}

std::unique_ptr<PLUGIN_FILE_READER_CLASS> OpenedReader(PLUGIN_FILE_READER_MODULE& module,
                                                       const SelftestFolder& folder,
                                                       const SelftestStream& stream,
                                                       std::uint32_t flags = TRN_OPEN_SAMPLE_READER) {
    auto reader = NewReader(module);
    return reader->OpenFile(folder.PathOf(stream.name), flags) == 1 ? std::move(reader) : nullptr;
}

void CheckDigest(const std::string& what, const SelftestStream& stream, const Bytes& pcm,
                 Verdicts& verdicts) {
    const std::string found = DigestOf(pcm);
    verdicts.Check(what + ": " + std::to_string(stream.samples) + " samples have digest " + stream.digest,
                   found == stream.digest, found);
}

/// Requests out of order give what lies there in one read from the start.
void CheckJumps(PLUGIN_FILE_READER_CLASS& reader, const SelftestStream& stream, const Bytes& pcm,
                Verdicts& verdicts) {
    const std::size_t width = stream.channels * sizeof(std::int16_t);
    bool same = true;
    for (const std::int64_t start : {15'000, 3, 20'001, 7'000, 0}) {
        const Bytes part = Read(reader, start, kRequest, stream.channels);
        const auto begin = pcm.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(start) * width);
        same = same && part.size() == kRequest * width && std::equal(part.begin(), part.end(), begin);
    }
    verdicts.Check(os::NarrowToUtf8(stream.name) + ": requests out of order give the same samples", same);
}

void CheckRefusals(PLUGIN_FILE_READER_CLASS& reader, const SelftestStream& stream, Verdicts& verdicts) {
    const std::string name = os::NarrowToUtf8(stream.name);
    unsigned char* data = nullptr;
    std::int32_t bytes = 0;
    verdicts.CheckResult(name + ": a negative start", 0, reader.ReadSamples(0, -1, 1, &data, &bytes));
    verdicts.CheckResult(name + ": a count of zero", 0, reader.ReadSamples(0, 0, 0, &data, &bytes));
    verdicts.CheckResult(name + ": more than can be delivered", 0,
                         reader.ReadSamples(0, 0, std::numeric_limits<std::uint32_t>::max(), &data, &bytes));
    const Bytes behind = Read(reader, 100 * stream.samples, kRequest, stream.channels);
    verdicts.Check(name + ": silence behind the end",
                   !behind.empty() && std::ranges::all_of(behind, [](auto byte) { return byte == 0; }));
}

void CheckStream(PLUGIN_FILE_READER_MODULE& module, const SelftestFolder& folder,
                 const SelftestStream& stream, Verdicts& verdicts) {
    const std::string name = os::NarrowToUtf8(stream.name);
    const auto reader = OpenedReader(module, folder, stream);
    verdicts.Check("OpenFile of " + name + " for the sample reader", reader != nullptr);
    if (reader == nullptr)
        return;
    KW_MEDIA_BASE_INFO_ST info;
    verdicts.CheckResult(name + ": GetFileInfo of the sample reader", 1,
                         reader->GetFileInfo(TRN_FILE_INFO_SAMPLE_READER, &info));
    verdicts.CheckResult(name + ": bits of a sample", 16, info.audioFormat.wBitsPerSample);
    const Bytes pcm = ReadAll(*reader, stream);
    CheckDigest(name, stream, pcm, verdicts);
    if (pcm.size() >= static_cast<std::size_t>(stream.samples) * stream.channels * sizeof(std::int16_t))
        CheckJumps(*reader, stream, pcm, verdicts);
    CheckRefusals(*reader, stream, verdicts);
    const auto alternate = OpenedReader(module, folder, stream, TRN_OPEN_SAMPLE_READER_ALTERNATE);
    verdicts.Check(name + ": flag 8 opens the sample reader, too",
                   alternate != nullptr && ReadAll(*alternate, stream) == pcm);
}

/// Two readers in turns; what one handed out stays while the other reads and goes.
void CheckTwoReaders(PLUGIN_FILE_READER_MODULE& module, const SelftestFolder& folder, Verdicts& verdicts) {
    const SelftestStream& one = SelftestStreams()[0];
    const SelftestStream& two = SelftestStreams()[1];
    const auto first = OpenedReader(module, folder, one);
    auto second = OpenedReader(module, folder, two);
    verdicts.Check("two readers are open at once", first != nullptr && second != nullptr);
    if (first == nullptr || second == nullptr)
        return;
    unsigned char* held = nullptr;
    std::int32_t heldBytes = 0;
    const bool given = first->ReadSamples(0, 5000, kRequest, &held, &heldBytes) == 1 && held != nullptr;
    const Bytes copy = given ? Bytes(held, held + heldBytes) : Bytes();
    CheckDigest("while another reader holds samples", two, ReadAll(*second, two), verdicts);
    second.reset();
    verdicts.Check("samples stay while another reader reads and goes",
                   given && std::equal(copy.begin(), copy.end(), held));
    CheckDigest("after another reader has gone", one, ReadAll(*first, one), verdicts);
}

} // namespace

std::wstring SelftestFolder::PathOf(const std::wstring& name) const {
    return path_ + os::kPathSeparator + name;
}

void CheckReading(PLUGIN_FILE_READER_MODULE& module, const SelftestFolder& folder, Verdicts& verdicts) {
    for (const SelftestStream& stream : SelftestStreams())
        CheckStream(module, folder, stream, verdicts);
    CheckTwoReaders(module, folder, verdicts);
}

void CheckIndexing(PLUGIN_FILE_READER_MODULE& module, const SelftestFolder& folder, Verdicts& verdicts) {
    const SelftestStream& stream = IndexedStream();
    const auto builder = OpenedReader(module, folder, stream, TRN_OPEN_INDEX_BUILDER);
    verdicts.Check("OpenFile for the index builder", builder != nullptr);
    if (builder == nullptr)
        return;
    verdicts.CheckResult("CreateFileIndex", 1, builder->CreateFileIndex());
    PLUGIN_INDEX_PROGRESS progress = {};
    verdicts.CheckResult("GetIndexProgress without a record", 0,
                         builder->GetIndexProgress(TRN_INDEX_PROGRESS_RECORD, nullptr));
    verdicts.CheckResult("GetIndexProgress of kind 2", 0, builder->GetIndexProgress(2, &progress));
    verdicts.CheckResult("GetIndexProgress", 1,
                         builder->GetIndexProgress(TRN_INDEX_PROGRESS_RECORD, &progress));
    verdicts.CheckResult("index: state at the end", 1, progress.state);
    verdicts.CheckResult("index: entries", kIndexedFrames, progress.framesIndexed);
    verdicts.CheckResult("CancelIndexing at the end", 1, builder->CancelIndexing());
    const auto reader = OpenedReader(module, folder, stream, TRN_OPEN_PROBE | TRN_OPEN_SAMPLE_READER);
    verdicts.Check("OpenFile with an index", reader != nullptr);
    if (reader != nullptr)
        CheckDigest("with an index", stream, ReadAll(*reader, stream), verdicts);
}

} // namespace mpatool
