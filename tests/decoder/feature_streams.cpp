#include "decoder/feature_streams.h"

namespace test {

using bitstream::BlockChoice;
using bitstream::ReservoirUse;
using bitstream::StreamOptions;
using bitstream::Version;

namespace {

constexpr Version kVersions[] = {Version::kMpeg1, Version::kMpeg2, Version::kMpeg25};
constexpr int kRates = 3;

std::string VersionName(Version version) {
    return version == Version::kMpeg1 ? "m1" : version == Version::kMpeg2 ? "m2" : "m25";
}

StreamOptions Layer3(Version version, int rate) {
    StreamOptions options;
    options.version = version;
    options.sampleRateIndex = rate;
    options.frames = 12;
    options.bitrateIndices = {version == Version::kMpeg1 ? 11 : 10};
    options.layer3.reservoir = ReservoirUse::kRandom;
    options.seed = static_cast<std::uint64_t>(100 * static_cast<int>(version) + 10 * rate + 1);
    return options;
}

const std::vector<BlockChoice> kEveryBlock = {{0, false}, {1, false}, {1, true}, {2, false},
                                              {2, true},  {3, false}, {3, true}};

void AddBlockTypes(std::vector<FeatureStream>& streams, Version version, int rate) {
    const std::string prefix = VersionName(version) + "-" + std::to_string(rate);
    for (const BlockChoice& block : kEveryBlock) {
        StreamOptions options = Layer3(version, rate);
        options.layer3.blocks = {block};
        // At 8 kHz no definition says where the short bands of a mixed block begin.
        if (version == Version::kMpeg25 && rate == 2 && block.type == 2 && block.mixed)
            continue;
        streams.push_back(
            {prefix + "-block" + std::to_string(block.type) + (block.mixed ? "-mixed" : ""), options});
    }
}

void AddStereoModes(std::vector<FeatureStream>& streams, Version version, int rate) {
    const std::string prefix = VersionName(version) + "-" + std::to_string(rate);
    for (const int extension : {1, 2, 3}) {
        StreamOptions options = Layer3(version, rate);
        options.mode = model::kJointStereo;
        options.modeExtensions = {extension};
        options.layer3.blocks = {{0, false}, {2, false}, {1, false}, {3, false}};
        if (!(version == Version::kMpeg25 && rate == 2))
            options.layer3.blocks.push_back({2, true});
        streams.push_back({prefix + "-joint" + std::to_string(extension), options});
        options.layer3.sameBlocksInBothChannels = true;
        options.layer3.positionsAbove7 = version == Version::kMpeg1;
        options.modeExtensions = {0, extension};
        streams.push_back({prefix + "-joint" + std::to_string(extension) + "-same-blocks", options});
    }
    for (const int mode : {model::kDualChannel, model::kSingleChannel}) {
        StreamOptions options = Layer3(version, rate);
        options.mode = mode;
        options.modeExtensions = {0, 1, 2, 3};
        options.crc = true;
        streams.push_back({prefix + (mode == model::kSingleChannel ? "-mono" : "-dual"), options});
    }
}

void AddTables(std::vector<FeatureStream>& streams) {
    for (int table = 0; table < 32; ++table) {
        if (table == 4 || table == 14)
            continue;
        StreamOptions options = Layer3(Version::kMpeg1, table % kRates);
        options.frames = 4;
        options.layer3.tables = {table};
        options.layer3.count1Table = table % 2;
        options.layer3.regionsPastEnd = table % 3 == 0;
        streams.push_back({"table" + std::to_string(table), options});
    }
}

void AddScaleFactors(std::vector<FeatureStream>& streams) {
    for (int scfsi = 0; scfsi < 16; scfsi += 3) {
        StreamOptions options = Layer3(Version::kMpeg1, scfsi % kRates);
        options.layer3.scfsi = scfsi;
        options.layer3.scfsiOverShortBlocks = true;
        options.layer3.blocks = {{0, false}, {2, false}, {2, true}};
        options.layer3.preflag = 1;
        options.layer3.scalefacScale = scfsi % 2;
        streams.push_back({"scfsi" + std::to_string(scfsi), options});
    }
    for (const int compress : {0, 399, 400, 499, 500, 511}) {
        StreamOptions options = Layer3(Version::kMpeg2, compress % kRates);
        options.layer3.scalefacCompress = {compress};
        options.layer3.blocks = {{0, false}, {2, false}, {2, true}};
        streams.push_back({"lsf-compress" + std::to_string(compress), options});
    }
    for (const int compress : {0, 359, 360, 487, 488, 509}) {
        StreamOptions options = Layer3(Version::kMpeg2, compress % kRates);
        options.mode = model::kJointStereo;
        options.modeExtensions = {1};
        options.layer3.rightCompress = {compress};
        options.layer3.blocks = {{0, false}, {2, false}, {2, true}};
        streams.push_back({"lsf-right-compress" + std::to_string(compress), options});
    }
}

void AddReservoir(std::vector<FeatureStream>& streams) {
    for (const Version version : kVersions) {
        StreamOptions options = Layer3(version, 0);
        options.frames = 30;
        options.bitrateIndices =
            version == Version::kMpeg1 ? std::vector<int>{1, 14} : std::vector<int>{2, 14};
        options.layer3.reservoir = ReservoirUse::kFull;
        options.crc = true;
        streams.push_back({VersionName(version) + "-vbr-full-reservoir", options});
    }
}

} // namespace

std::vector<FeatureStream> Layer3FeatureStreams() {
    std::vector<FeatureStream> streams;
    for (const Version version : kVersions) {
        for (int rate = 0; rate < kRates; ++rate) {
            AddBlockTypes(streams, version, rate);
            AddStereoModes(streams, version, rate);
        }
    }
    AddTables(streams);
    AddScaleFactors(streams);
    AddReservoir(streams);
    return streams;
}

std::vector<FeatureStream> Layer2FeatureStreams() {
    std::vector<FeatureStream> streams;
    for (const Version version : kVersions) {
        for (int rate = 0; rate < kRates; ++rate) {
            for (int bitRate = 1; bitRate <= 14; ++bitRate) {
                for (const int mode : {model::kStereo, model::kJointStereo, model::kSingleChannel}) {
                    StreamOptions options;
                    options.layer = 2;
                    options.version = version;
                    options.sampleRateIndex = rate;
                    options.bitrateIndices = {bitRate};
                    options.mode = mode;
                    options.modeExtensions = {0, 1, 2, 3};
                    options.frames = 3;
                    options.crc = bitRate % 2 == 0;
                    options.layer2.forbidden = true;
                    options.padding = bitstream::Padding::kAlways;
                    options.seed = streams.size() + 1;
                    streams.push_back({VersionName(version) + "-" + std::to_string(rate) + "-rate" +
                                           std::to_string(bitRate) + "-mode" + std::to_string(mode),
                                       options});
                }
            }
        }
    }
    return streams;
}

} // namespace test
