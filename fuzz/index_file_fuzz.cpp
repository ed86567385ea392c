/// Any index beside a valid stream: its records, and every reader that uses it.
#include "harness/sample_script.h"
#include "harness/slice_script.h"

#include "mpa/file_probe.h"
#include "reader/reader_streams.h"

#include <array>

namespace {

using fuzz::Require;
using namespace trnmpa;

const fuzz::Bytes& StreamOf(std::uint8_t choice) {
    static const std::array<fuzz::Bytes, 3> streams = {
        test::SteadyStream(8).bytes, test::ChangingStream(8).bytes, test::Layer2Stream(8).bytes};
    return streams[choice % streams.size()];
}

void CheckRecords(const fuzz::Media& media, fuzz::View bytes) {
    CMpAudioFrameBufferReader index;
    Require(index.Open(media.Path() + L".idx") == 1, "the index is there");
    const MpaIndexHeader header = ReadIndexHeader(index);
    if (bytes.size() >= kIndexHeaderBytes) {
        const auto written = FormatIndexHeader(header);
        Require(std::equal(written.begin(), written.end(), bytes.begin()), "the header comes back");
    }
    const auto entries = fuzz::Watched("index entries", media.WorkFor(),
                                       [&] { return ReadIndexEntries(index, header.frameCount); });
    Require(entries.size() <= header.frameCount && entries.size() <= media.WorkFor().indexEntries,
            "more entries than there are");
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const auto written = FormatIndexEntry(entries[i]);
        Require(
            std::equal(written.begin(), written.end(),
                       bytes.begin() + static_cast<std::ptrdiff_t>(kIndexHeaderBytes + i * kIndexEntryBytes)),
            "an entry comes back");
    }
}

void CheckProbe(const fuzz::Media& media) {
    CMPGAudioFileBufferReader probe;
    const std::int32_t result =
        fuzz::Watched("probe", media.WorkFor(), [&] { return probe.ParseFile(media.Path()); });
    Require(result == kProbeDescribed, "an index is believed");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input({data, size});
    const fuzz::Bytes& stream = StreamOf(input.U8());
    fuzz::Input script(input.Take(16));
    const fuzz::ExactBlock index(input.Rest());
    fuzz::Media media(stream, index.Bytes());
    CheckRecords(media, index.Bytes());
    CheckProbe(media);

    fuzz::SampleScript samples(media);
    samples.Open();
    for (const std::int64_t start : {0, 1152, 5000, 100'000})
        samples.Read(start, 600);
    fuzz::SliceScript slices(media);
    slices.Open();
    slices.Read();
    slices.Jump(3);
    while (!script.IsEmpty()) {
        samples.Step(script);
        slices.Step(script);
    }
    return 0;
}
