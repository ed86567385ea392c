#include "decoder/decoder.h"

#include "decoder/error_text.h"
#include "decoder/layer1.h"
#include "decoder/layer2.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace trnmpa {

namespace {

constexpr int kHeaderBytes = 4;
constexpr int kCrcBytes = 2;

} // namespace

const char* AMPDecoder::GetIdentification() {
    return "Velodec 1.4, based on Tarnlow 1.1.0 source";
}

void AMPDecoder::Reset() {
    Clear();
    synthesis_.Reset();
    layer3_.Reset();
}

void AMPDecoder::SetBitsource(IAMPBitsource* source) {
    SetSource(source);
}

void AMPDecoder::SetOutputBuffer(short* pcm) {
    output_ = pcm;
}

unsigned int AMPDecoder::GetOutputSize() {
    return outputSize_;
}

unsigned int AMPDecoder::GetFrameInfo(AMPFrameInfo* info) {
    const int samples = header_.SamplesPerFrame() * header_.channels;
    outputSize_ = static_cast<unsigned int>(samples) * sizeof(short);
    info->synced = synced_ ? 1 : 0;
    info->layer = static_cast<std::uint8_t>(header_.layer);
    info->version = header_.lowSamplingFrequency != 0 ? 2 : 1;
    info->frameBytes = header_.frameBytes;
    info->bitRate = header_.bitRateKbps * 1000;
    info->sampleRate = header_.sampleRate;
    info->stereo = header_.channels == 1 ? 0 : 1;
    info->bitsPerSample = 16;
    info->pcmBytes = static_cast<std::int32_t>(outputSize_);
    return outputSize_;
}

const char* AMPDecoder::GetErrorText(int code) {
    return ErrorText(code);
}

void AMPDecoder::Close() {}

bool AMPDecoder::FindHeader(HeaderBytes& bytes) {
    ReadSource(bytes.data(), kHeaderBytes);
    while (!IsAcceptedHeader(bytes, headerLocked_ ? &header_ : nullptr)) {
        const int drop = BytesToNextCandidate(bytes);
        std::copy(bytes.begin() + drop, bytes.end(), bytes.begin());
        if (!TryReadSource(bytes.data() + kHeaderBytes - drop, drop))
            return false;
    }
    return true;
}

void AMPDecoder::ReadFrameHeader() {
    synced_ = true;
    bodyBytes_ = 0;
    HeaderBytes bytes = {};
    if (!FindHeader(bytes)) {
        synced_ = false;
        return;
    }
    header_ = ParseHeader(bytes);
    headerLocked_ = true;
    int bodyBytes = header_.frameBytes - kHeaderBytes;
    if (header_.hasCrc != 0) {
        ReadCrc();
        bodyBytes -= kCrcBytes;
    }
    if (header_.layer == 3) {
        ReadSideInfo();
        bodyBytes -= header_.SideInfoBytes();
    }
    bodyBytes_ = std::max(bodyBytes, 0);
}

void AMPDecoder::ReadCrc() {
    std::array<std::uint8_t, kCrcBytes> unchecked = {};
    if (!TryReadSource(unchecked.data(), kCrcBytes))
        throw static_cast<int>(AMP_ERR_READ);
}

void AMPDecoder::ReadSideInfo() {
    std::array<std::uint8_t, SideInfo::kMaximumBytes> bytes = {};
    ReadSource(bytes.data(), header_.SideInfoBytes());
    sideInfo_ = ParseSideInfo(header_, bytes);
}

void AMPDecoder::SkipFrame() {
    const int bodyBytes = std::exchange(bodyBytes_, 0);
    if (header_.layer == 3)
        AppendToReservoir(bodyBytes);
    else
        FillLinear(bodyBytes);
}

bool AMPDecoder::DecodeFrame() {
    outputSize_ = 0;
    if (!synced_ || output_ == nullptr)
        return false;
    outputSize_ = static_cast<unsigned int>(DecodeBody(std::exchange(bodyBytes_, 0)));
    return true;
}

int AMPDecoder::DecodeBody(int bodyBytes) {
    switch (header_.layer) {
    case 3:
        AppendToReservoir(bodyBytes);
        return layer3_.DecodeFrame(*this, header_, sideInfo_, bodyBytes, synthesis_, output_);
    case 2:
        return DecodeLayer2(*this, header_, bodyBytes, synthesis_, output_);
    case 1:
        return DecodeLayer1(*this, header_, bodyBytes, synthesis_, output_);
    default:
        return 0;
    }
}

} // namespace trnmpa

IAMPDecoder* AMPDecoderCreate() {
    return new (std::nothrow) trnmpa::AMPDecoder;
}
