#include "support/model/decoder_model.h"

#include "support/model/stereo.h"

#include <algorithm>

namespace test::model {

void Decoder::Reset(std::size_t offset) {
    position_ = std::min(offset, stream_.size());
    reservoir_ = Reservoir();
    overlap_ = {};
    synthesis_.Reset();
}

/// A short read takes what there is.
std::optional<std::span<const std::uint8_t>> Decoder::Take(std::size_t count) {
    const std::size_t left = stream_.size() - position_;
    const auto bytes = stream_.subspan(position_, std::min(count, left));
    position_ += bytes.size();
    if (bytes.size() < count)
        return std::nullopt;
    return bytes;
}

bool Decoder::Search(HeaderBytes& bytes) {
    while (!ParseHeader(bytes, lock_)) {
        const auto step = static_cast<std::size_t>(SearchStep(bytes));
        const auto more = Take(step);
        if (!more)
            return false;
        std::copy(bytes.begin() + static_cast<std::ptrdiff_t>(step), bytes.end(), bytes.begin());
        std::copy(more->begin(), more->end(), bytes.end() - static_cast<std::ptrdiff_t>(step));
    }
    return true;
}

Outcome Decoder::ReadHeader() {
    const auto start = Take(4);
    if (!start)
        return Outcome::kEndOfStream;
    HeaderBytes bytes{};
    std::copy(start->begin(), start->end(), bytes.begin());
    if (!Search(bytes))
        return Outcome::kNotSynced;
    frame_.header = *ParseHeader(bytes, lock_);
    frame_.offset = position_ - 4;
    lock_ = frame_.header;

    int body = frame_.header.frameBytes - 4;
    if (frame_.header.crc) {
        if (!Take(2))
            return Outcome::kCrcCut;
        body -= 2;
    }
    if (frame_.header.layer == 3) {
        const int sideInfoBytes = frame_.header.SideInfoBytes();
        const auto sideInfo = Take(static_cast<std::size_t>(sideInfoBytes));
        if (!sideInfo)
            return Outcome::kEndOfStream;
        frame_.sideInfo = ParseSideInfo(frame_.header, *sideInfo);
        body -= sideInfoBytes;
    }
    bodyBytes_ = static_cast<std::size_t>(std::max(body, 0));
    return Outcome::kDone;
}

Outcome Decoder::SkipBody() {
    const auto body = Take(bodyBytes_);
    if (!body)
        return Outcome::kEndOfStream;
    if (frame_.header.layer == 3)
        reservoir_.Append(*body);
    return Outcome::kDone;
}

Outcome Decoder::DecodeBody() {
    const auto body = Take(bodyBytes_);
    if (!body)
        return Outcome::kEndOfStream;
    frame_.pcm.clear();
    frame_.sums.clear();
    if (frame_.header.layer == 3) {
        DecodeLayer3(*body);
        return Outcome::kDone;
    }
    frame_.layer2 = DecodeLayer2(frame_.header, *body);
    for (const SampleRow& row : frame_.layer2.rows)
        Synthesise(row);
    return Outcome::kDone;
}

void Decoder::DecodeLayer3(std::span<const std::uint8_t> body) {
    reservoir_.Append(body);
    const std::vector<std::uint8_t> data =
        reservoir_.Last(static_cast<std::size_t>(frame_.sideInfo.mainDataBegin) + body.size());
    BitReader bits(data);
    frame_.granules = {};
    for (std::size_t granule = 0; granule < static_cast<std::size_t>(frame_.header.Granules()); ++granule)
        DecodeGranule(bits, granule);
}

void Decoder::DecodeGranule(BitReader& bits, std::size_t granule) {
    const Header& header = frame_.header;
    const auto& infos = frame_.sideInfo.granules[granule];
    auto& traces = frame_.granules[granule];
    const auto channels = static_cast<std::size_t>(header.channels);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        const GranuleInfo& info = infos[channel];
        ChannelTrace& trace = traces[channel];
        const std::size_t end = bits.Position() + static_cast<std::size_t>(info.part23Length);
        trace.scaleFactors = header.lsf ? ReadScaleFactorsLsf(bits, header, info, static_cast<int>(channel))
                                        : ReadScaleFactors(bits, frame_.sideInfo, static_cast<int>(granule),
                                                           static_cast<int>(channel),
                                                           frame_.granules[0][channel].scaleFactors);
        trace.lines = ReadLines(bits, header, info, end);
        bits.Seek(end);
        trace.requantised = Requantise(header, info, trace.scaleFactors, trace.lines);
        trace.afterStereo = trace.requantised;
    }
    if (channels == 2)
        ProcessStereo(header, infos[1], traces[1].scaleFactors, traces[0].afterStereo, traces[1].afterStereo);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        ChannelTrace& trace = traces[channel];
        trace.afterReorder = Reorder(header, infos[channel], trace.afterStereo);
        trace.afterAlias = ReduceAliases(infos[channel], trace.afterReorder);
        trace.subbands = Hybrid(infos[channel], trace.afterAlias, overlap_[channel]);
    }
    for (std::size_t slot = 0; slot < 18; ++slot)
        Synthesise({traces[0].subbands[slot], traces[1].subbands[slot]});
}

void Decoder::Synthesise(const SampleRow& row) {
    const auto channels = static_cast<std::size_t>(frame_.header.channels);
    std::array<std::array<double, 32>, 2> sums{};
    synthesis_.StartSlot();
    for (std::size_t channel = 0; channel < channels; ++channel)
        sums[channel] = synthesis_.Channel(channel, row[channel]);
    for (std::size_t i = 0; i < 32; ++i)
        for (std::size_t channel = 0; channel < channels; ++channel) {
            frame_.sums.push_back(sums[channel][i]);
            frame_.pcm.push_back(ToPcm(sums[channel][i]));
        }
}

std::vector<std::int16_t> DecodeStream(std::span<const std::uint8_t> stream) {
    Decoder decoder(stream);
    std::vector<std::int16_t> pcm;
    while (decoder.ReadHeader() == Outcome::kDone && decoder.DecodeBody() == Outcome::kDone) {
        const std::vector<std::int16_t>& frame = decoder.CurrentFrame().pcm;
        pcm.insert(pcm.end(), frame.begin(), frame.end());
    }
    return pcm;
}

} // namespace test::model
