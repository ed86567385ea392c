#include "decoder/layer3/layer3.h"

#include "decoder/layer3/band_layout.h"
#include "decoder/layer3/requantise.h"
#include "decoder/layer3/scale_factors.h"
#include "decoder/layer3/spectrum.h"
#include "decoder/layer3/stereo.h"

namespace trnmpa {

void Layer3Decoder::Reset() {
    for (HybridMemory& memory : memory_)
        memory.ClearOverlap();
}

int Layer3Decoder::DecodeFrame(AMPBitstream& bits, const DecoderHeader& header, SideInfo& info,
                               int mainDataBytes, SynthesisBank& synthesis, std::int16_t* pcm) {
    bits.RewindToFrameStart(static_cast<int>(info.mainDataBegin) + mainDataBytes);
    factors_[0] = {};
    factors_[1] = {};
    const int valuesPerGranule = kGranuleLines * header.channels;
    for (int granule = 0; granule < header.GranuleCount(); ++granule) {
        ReadGranule(bits, header, info, granule);
        SynthesiseGranule(header, info, granule, synthesis, pcm + granule * valuesPerGranule);
    }
    return header.GranuleCount() * valuesPerGranule;
}

void Layer3Decoder::ReadGranule(AMPBitstream& bits, const DecoderHeader& header, SideInfo& info,
                                int granule) {
    for (int channel = 0; channel < header.channels; ++channel)
        ReadChannel(bits, header, info, granule, channel);
    if (header.channels == 2) {
        const GranuleInfo& right = info.granule[granule][1];
        ProcessStereo(header, {right, LayoutOf(header, right), factors_[1]}, spectrum_[0], spectrum_[1],
                      nonZeroCount_);
    }
}

void Layer3Decoder::ReadChannel(AMPBitstream& bits, const DecoderHeader& header, SideInfo& info, int granule,
                                int channel) {
    GranuleInfo& granuleInfo = info.granule[granule][channel];
    BitReader& reader = bits.Reader();
    const int end = reader.Position() + static_cast<int>(granuleInfo.part23Length);
    if (header.lowSamplingFrequency != 0)
        ReadScaleFactorsLsf(reader, header, channel, granuleInfo, factors_[channel]);
    else
        ReadScaleFactorsMpeg1(reader, granuleInfo, info.scaleFactorSelection[channel], granule,
                              factors_[channel]);
    const LineGains gains(granuleInfo, LayoutOf(header, granuleInfo), factors_[channel]);
    nonZeroCount_[channel] = ReadSpectrum(reader, header, granuleInfo, gains, end, spectrum_[channel]);
    reader.SetPosition(end);
}

void Layer3Decoder::SynthesiseGranule(const DecoderHeader& header, const SideInfo& info, int granule,
                                      SynthesisBank& synthesis, std::int16_t* pcm) {
    for (int channel = 0; channel < header.channels; ++channel) {
        const GranuleInfo& granuleInfo = info.granule[granule][channel];
        SynthesiseHybrid(granuleInfo, LayoutOf(header, granuleInfo), nonZeroCount_[channel],
                         spectrum_[channel], memory_[channel], slots_[channel]);
    }
    synthesis.Synthesise(header.channels, kLinesPerSubband, slots_[0][0], true, pcm);
}

} // namespace trnmpa
