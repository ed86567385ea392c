#include "mpatool/info/file_report.h"
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

/// Null for what the frame does not tell.
Json Told(const std::optional<std::int64_t>& value) {
    return value ? Json(*value) : Json(nullptr);
}

Json EncoderFrameObject(const FileClaims& claims) {
    if (!claims.encoderFrame)
        return nullptr;
    const EncoderFrame& frame = *claims.encoderFrame;
    return {{"name", frame.name},
            {"offset", frame.offset},
            {"frames", Told(frame.frames)},
            {"bytes", Told(frame.bytes)},
            {"quality", Told(frame.quality)},
            {"tableOfContents", frame.hasTableOfContents},
            {"encoder", frame.encoder.empty() ? Json(nullptr) : Json(frame.encoder)},
            {"delaySamples", Told(frame.delay)},
            {"paddingSamples", Told(frame.padding)},
            {"soundSamples", Told(frame.SoundSamples(claims.samplesPerFrame))}};
}

Json ClaimsObject(const FileClaims& claims) {
    Json tags = Json::array();
    for (const auto* some : {&claims.tags.leading, &claims.tags.trailing})
        for (const FileTag& tag : *some)
            tags.push_back({{"name", tag.name}, {"offset", tag.offset}, {"bytes", tag.bytes}});
    return {{"encoderFrame", EncoderFrameObject(claims)}, {"tags", tags}};
}

Json CountedObject(const StreamScan& scan) {
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
            {"samplesPerFrame", scan.samplesPerFrame}};
}

} // namespace

nlohmann::ordered_json JsonReport(const FileReport& report) {
    const StreamScan& scan = report.scan;
    return {{"file", os::NarrowToUtf8(report.file)},
            {"bytes", scan.fileBytes},
            {"claimed", ClaimsObject(report.claims)},
            {"counted", CountedObject(scan)},
            {"delivered",
             {{"delaySamples", scan.delaySamples}, {"samples", scan.Samples()}, {"seconds", scan.Seconds()}}},
            {"module",
             {{"classByName", report.classByName},
              {"probe", ProbeObject(report)},
              {"sampleReader", SampleReaderObject(report)}}}};
}

} // namespace mpatool
