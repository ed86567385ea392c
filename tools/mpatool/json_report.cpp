#include "mpatool/file_report.h"
#include "os/paths.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace mpatool {

namespace {

using Json = nlohmann::ordered_json;

/// Copies of the fields: in the packed record they are not aligned, so nothing may refer to them.
void AddFormat(Json& object, const WAVEFORMATEX& format) {
    object["formatTag"] = std::uint16_t{format.wFormatTag};
    object["channels"] = std::uint16_t{format.nChannels};
    object["sampleRate"] = std::uint32_t{format.nSamplesPerSec};
    object["averageBytesPerSecond"] = std::uint32_t{format.nAvgBytesPerSec};
    object["blockAlign"] = std::uint16_t{format.nBlockAlign};
    object["bitsPerSample"] = std::uint16_t{format.wBitsPerSample};
}

Json ProbeObject(const FileReport& report) {
    Json object = {{"result", report.probeResult},
                   {"variableBitRate", report.probeResult == TRN_OPEN_VARIABLE_BIT_RATE}};
    if (!report.probe)
        return object;
    object["classIdentifier"] = report.probe->classIdentifier;
    object["audioCodec"] = report.probe->audioCodec;
    object["duration100ns"] = report.probe->duration;
    AddFormat(object, report.probe->audioFormat);
    return object;
}

Json SampleReaderObject(const FileReport& report) {
    Json object = {{"opened", report.sampleReaderOpened}};
    if (report.pcm)
        AddFormat(object, *report.pcm);
    return object;
}

Json IndexObject(const IndexScan& index) {
    return {{"entries", index.entries},
            {"claimedEntries", index.claimedEntries},
            {"matchesFrames", index.matchesFrames}};
}

Json ScanObject(const StreamScan& scan) {
    return {{"index", scan.index ? IndexObject(*scan.index) : Json(nullptr)},
            {"infoFrame", scan.hasInfoFrame},
            {"firstFrameOffset", scan.firstHeader.firstFrameOffset},
            {"layer", scan.firstHeader.layer},
            {"lowSamplingFrequency", scan.firstHeader.lsf != 0},
            {"sampleRate", scan.firstHeader.sampleRate},
            {"channels", scan.firstHeader.channels},
            {"constantBitRate", scan.IsConstantBitRate()},
            {"lowestBitRate", scan.lowestBitRate},
            {"highestBitRate", scan.highestBitRate},
            {"averageBitRate", std::llround(scan.AverageBitRate())},
            {"frames", scan.frames},
            {"samplesPerFrame", scan.samplesPerFrame},
            {"delaySamples", scan.delaySamples},
            {"samples", scan.Samples()},
            {"seconds", scan.Seconds()}};
}

} // namespace

nlohmann::ordered_json JsonReport(const FileReport& report) {
    return {{"file", os::NarrowToUtf8(report.file)},      {"bytes", report.scan.fileBytes},
            {"classByName", report.classByName},          {"probe", ProbeObject(report)},
            {"sampleReader", SampleReaderObject(report)}, {"scan", ScanObject(report.scan)}};
}

} // namespace mpatool
