#include "mpatool/info/file_report.h"

namespace mpatool {

FileReport MakeReport(ModuleHost& host, Decoder decoder, const std::wstring& file) {
    FileReport report;
    report.file = file;
    report.claims = ReadClaims(file);
    report.scan = ScanStream(file, decoder);
    report.classByName = host.ClassIdentifierFor(file);

    // A reader of its own: with both flags, a variable bit rate would keep the sample reader from being
    // opened.
    ModuleReader probe = host.CreateReader(file);
    report.probeResult = probe.Open(file, TRN_OPEN_PROBE);
    if (report.probeResult == 1)
        report.probe = probe.ProbeInfo();

    ModuleReader sampleReader = host.CreateReader(file);
    report.sampleReaderOpened = sampleReader.Open(file, TRN_OPEN_SAMPLE_READER) == 1;
    if (report.sampleReaderOpened)
        report.pcm = sampleReader.PcmFormat();
    return report;
}

} // namespace mpatool
