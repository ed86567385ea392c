#include "mpatool/file_report.h"
#include "os/paths.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace mpatool {

namespace {

using Json = nlohmann::ordered_json;

Json ProbeObject(const FileReport& report) {
    Json object = {{"result", report.probeResult},
                   {"variableBitRate", report.probeResult == TRN_OPEN_VARIABLE_BIT_RATE}};
    if (!report.probe)
        return object;
    const TRN_MEDIA_INFO2& probe = *report.probe;
    object["classIdentifier"] = probe.classIdentifier;
    object["audioCodec"] = probe.audioCodec;
    object["duration100ns"] = probe.duration;
    object["formatTag"] = probe.audioFormat.wFormatTag;
    object["channels"] = probe.audioFormat.nChannels;
    object["sampleRate"] = probe.audioFormat.nSamplesPerSec;
    object["averageBytesPerSecond"] = probe.audioFormat.nAvgBytesPerSec;
    object["blockAlign"] = probe.audioFormat.nBlockAlign;
    object["bitsPerSample"] = probe.audioFormat.wBitsPerSample;
    return object;
}

Json SampleReaderObject(const FileReport& report) {
    Json object = {{"opened", report.sampleReaderOpened}};
    if (!report.pcm)
        return object;
    object["formatTag"] = report.pcm->wFormatTag;
    object["channels"] = report.pcm->nChannels;
    object["sampleRate"] = report.pcm->nSamplesPerSec;
    object["averageBytesPerSecond"] = report.pcm->nAvgBytesPerSec;
    object["blockAlign"] = report.pcm->nBlockAlign;
    object["bitsPerSample"] = report.pcm->wBitsPerSample;
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
