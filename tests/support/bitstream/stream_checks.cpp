#include "support/bitstream/stream_checks.h"

#include "support/model/bands.h"

#include <gtest/gtest.h>

#include <cmath>

namespace test::bitstream {

namespace {

void ExpectSameHeader(const model::Header& read, const model::Header& written) {
    EXPECT_EQ(read.lsf, written.lsf);
    EXPECT_EQ(read.mpeg25, written.mpeg25);
    EXPECT_EQ(read.layer, written.layer);
    EXPECT_EQ(read.crc, written.crc);
    EXPECT_EQ(read.kbps, written.kbps);
    EXPECT_EQ(read.sampleRate, written.sampleRate);
    EXPECT_EQ(read.mode, written.mode);
    EXPECT_EQ(read.modeExtension, written.modeExtension);
    EXPECT_EQ(read.channels, written.channels);
    EXPECT_EQ(read.frameBytes, written.frameBytes);
}

void ExpectSameInfo(const model::GranuleInfo& read, const model::GranuleInfo& written) {
    EXPECT_EQ(read.part23Length, written.part23Length);
    EXPECT_EQ(read.bigValues, written.bigValues);
    EXPECT_EQ(read.globalGain, written.globalGain);
    EXPECT_EQ(read.scalefacCompress, written.scalefacCompress);
    EXPECT_EQ(read.windowSwitching, written.windowSwitching);
    EXPECT_EQ(read.blockType, written.blockType);
    EXPECT_EQ(read.mixed, written.mixed);
    EXPECT_EQ(read.tableSelect, written.tableSelect);
    EXPECT_EQ(read.subblockGain, written.subblockGain);
    EXPECT_EQ(read.preflag, written.preflag);
    EXPECT_EQ(read.scalefacScale, written.scalefacScale);
    EXPECT_EQ(read.count1Table, written.count1Table);
}

void ExpectSameFactors(const model::Header& header, const model::GranuleInfo& info,
                       const model::ScaleFactors& read, const ScaleFactorSet& written) {
    for (const model::Band& band : model::BandsOf(header, info)) {
        const auto number = static_cast<std::size_t>(band.number);
        if (band.window == model::kLongWindow) {
            EXPECT_EQ(read.longBand[number], written.longBand[number]) << "band " << number;
        } else {
            const auto window = static_cast<std::size_t>(band.window);
            EXPECT_EQ(read.shortBand[number][window], written.shortBand[number][window]) << "band " << number;
        }
    }
}

void ExpectSameLayer3(const model::Frame& read, const FrameRecord& written) {
    EXPECT_EQ(read.sideInfo.mainDataBegin, written.mainDataBegin);
    EXPECT_EQ(read.sideInfo.scfsi, written.sideInfo.scfsi);
    for (std::size_t granule = 0; granule < static_cast<std::size_t>(written.header.Granules()); ++granule)
        for (std::size_t channel = 0; channel < static_cast<std::size_t>(written.header.channels);
             ++channel) {
            SCOPED_TRACE("granule " + std::to_string(granule) + " channel " + std::to_string(channel));
            const model::GranuleInfo& info = written.sideInfo.granules[granule][channel];
            const model::ChannelTrace& trace = read.granules[granule][channel];
            const GranuleContent& content = written.granules[granule][channel];
            ExpectSameInfo(read.sideInfo.granules[granule][channel], info);
            ExpectSameFactors(written.header, info, trace.scaleFactors, content.scaleFactors);
            EXPECT_EQ(trace.lines.values, content.lines);
        }
}

void ExpectSameLayer2(const model::Layer2Body& read, const Layer2Content& written) {
    EXPECT_EQ(read.levels, written.levels);
    EXPECT_EQ(read.scfsi, written.scfsi);
    EXPECT_EQ(read.scaleFactors, written.scaleFactors);
    bool same = true;
    for (std::size_t channel = 0; channel < 2; ++channel)
        for (std::size_t subband = 0; subband < 32; ++subband)
            for (std::size_t i = 0; i < 36; ++i)
                same &= read.quantised[channel][i][subband] == written.samples[channel][subband][i];
    EXPECT_TRUE(same) << "samples differ";
}

void AddPcm(const model::Frame& frame, double& squares, DecodeSummary& summary) {
    for (const std::int16_t value : frame.pcm) {
        summary.clipped += value == 32767 || value == -32768 ? 1 : 0;
        squares += static_cast<double>(value) * value;
    }
    summary.values += frame.pcm.size();
}

} // namespace

DecodeSummary ExpectDecodesAsWritten(const Stream& stream, const std::string& name) {
    SCOPED_TRACE(name);
    model::Decoder decoder(stream.bytes);
    DecodeSummary summary;
    double squares = 0.0;
    const bool failedBefore = testing::Test::HasFailure();
    for (const FrameRecord& written : stream.frames) {
        SCOPED_TRACE("frame " + std::to_string(summary.frames));
        const bool decoded =
            decoder.ReadHeader() == model::Outcome::kDone && decoder.DecodeBody() == model::Outcome::kDone;
        EXPECT_TRUE(decoded);
        if (!decoded || (testing::Test::HasFailure() && !failedBefore))
            return summary;
        const model::Frame& read = decoder.CurrentFrame();
        EXPECT_EQ(read.offset, written.offset);
        ExpectSameHeader(read.header, written.header);
        if (written.header.layer == 3)
            ExpectSameLayer3(read, written);
        else
            ExpectSameLayer2(read.layer2, written.layer2);
        AddPcm(read, squares, summary);
        ++summary.frames;
    }
    EXPECT_EQ(decoder.ReadHeader(), model::Outcome::kEndOfStream);
    summary.rms =
        std::sqrt(squares / static_cast<double>(std::max<std::size_t>(summary.values, 1))) / 32768.0;
    return summary;
}

Stream WriteChecked(const StreamOptions& options, const std::string& name) {
    Stream stream = WriteStream(options);
    EXPECT_EQ(stream.frames.size(), static_cast<std::size_t>(options.frames)) << name;
    const DecodeSummary summary = ExpectDecodesAsWritten(stream, name);
    EXPECT_EQ(summary.frames, stream.frames.size()) << name;
    return stream;
}

} // namespace test::bitstream
