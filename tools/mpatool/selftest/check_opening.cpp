#include "mpatool/selftest/checks.h"
#include "mpatool/selftest/streams.h"
#include "os/paths.h"
#include "trnmediadet/media_info.h"

namespace mpatool {

namespace {

constexpr std::uint32_t kAllWays = TRN_OPEN_PROBE | TRN_OPEN_SAMPLE_READER | TRN_OPEN_INDEX_BUILDER;

std::int32_t ReadOne(PLUGIN_FILE_READER_CLASS& reader) {
    unsigned char* data = nullptr;
    std::int32_t bytes = 0;
    return reader.ReadSamples(0, 0, 1, &data, &bytes);
}

/// No engine is there: every operation says so.
void CheckNothingOpen(const std::string& when, PLUGIN_FILE_READER_CLASS& reader, Verdicts& verdicts) {
    TRN_MEDIA_INFO2 probed;
    KW_MEDIA_BASE_INFO_ST described;
    PLUGIN_INDEX_PROGRESS progress = {};
    verdicts.CheckResult(when + ": GetFileInfo of the probe", 0,
                         reader.GetFileInfo(TRN_FILE_INFO_PROBE, &probed));
    verdicts.CheckResult(when + ": GetFileInfo of the sample reader", 0,
                         reader.GetFileInfo(TRN_FILE_INFO_SAMPLE_READER, &described));
    verdicts.CheckResult(when + ": ReadSamples", 0, ReadOne(reader));
    verdicts.CheckResult(when + ": CreateFileIndex", 0, reader.CreateFileIndex());
    verdicts.CheckResult(when + ": GetIndexProgress", 0,
                         reader.GetIndexProgress(TRN_INDEX_PROGRESS_RECORD, &progress));
    verdicts.CheckResult(when + ": CancelIndexing", 0, reader.CancelIndexing());
}

void CheckProbe(PLUGIN_FILE_READER_CLASS& reader, const SelftestFolder& folder, const SelftestStream& stream,
                Verdicts& verdicts) {
    const std::string name = os::NarrowToUtf8(stream.name);
    verdicts.CheckResult("OpenFile of " + name + " for the probe", 1,
                         reader.OpenFile(folder.PathOf(stream.name), TRN_OPEN_PROBE));
    TRN_MEDIA_INFO2 info;
    verdicts.CheckResult(name + ": GetFileInfo of the probe", 1,
                         reader.GetFileInfo(TRN_FILE_INFO_PROBE, &info));
    verdicts.CheckResult(name + ": class by its frames", stream.classIdentifier, info.classIdentifier);
    verdicts.CheckResult(name + ": sample rate", stream.sampleRate, info.audioFormat.nSamplesPerSec);
    verdicts.CheckResult(name + ": channels", stream.channels, info.audioFormat.nChannels);
    verdicts.CheckResult(name + ": GetFileInfo without a record", 0,
                         reader.GetFileInfo(TRN_FILE_INFO_PROBE, nullptr));
}

/// The probe's special result ends the open: nothing behind it is made.
void CheckVariable(PLUGIN_FILE_READER_MODULE& module, const SelftestFolder& folder, Verdicts& verdicts) {
    const auto reader = NewReader(module);
    verdicts.CheckResult("OpenFile of a variable bit rate in all ways", TRN_OPEN_VARIABLE_BIT_RATE,
                         reader->OpenFile(folder.PathOf(L"variable.mp3"), kAllWays));
    verdicts.CheckResult("variable bit rate: no sample reader is made", 0, ReadOne(*reader));
    verdicts.CheckResult("variable bit rate: no index builder is made", 0, reader->CreateFileIndex());
}

} // namespace

void CheckNewReader(PLUGIN_FILE_READER_MODULE& module, Verdicts& verdicts) {
    const auto reader = NewReader(module);
    verdicts.CheckResult("GetClassInfo without a record", 0, reader->GetClassInfo(nullptr));
    verdicts.CheckResult("ClassReserved1", 0, reader->ClassReserved1());
    verdicts.CheckResult("ClassReserved2", 0, reader->ClassReserved2());
    CheckNothingOpen("new reader", *reader, verdicts);
}

void CheckOpening(PLUGIN_FILE_READER_MODULE& module, const SelftestFolder& folder, Verdicts& verdicts) {
    const auto reader = NewReader(module);
    const std::wstring missing = folder.PathOf(L"missing.mp3");
    for (const std::uint32_t flags : {TRN_OPEN_PROBE, TRN_OPEN_SAMPLE_READER, TRN_OPEN_INDEX_BUILDER})
        verdicts.CheckResult("OpenFile of a missing file, flags " + std::to_string(flags), 0,
                             NewReader(module)->OpenFile(missing, flags));
    verdicts.CheckResult("OpenFile with flags 0", 1, reader->OpenFile(missing, 0));
    CheckNothingOpen("flags 0", *reader, verdicts);
    for (const SelftestStream& stream : SelftestStreams())
        CheckProbe(*reader, folder, stream, verdicts);
    std::uint32_t anything[64] = {};
    verdicts.CheckResult("GetFileInfo of kind 2", 0, reader->GetFileInfo(2, anything));
    CheckVariable(module, folder, verdicts);
}

} // namespace mpatool
