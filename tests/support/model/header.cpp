#include "support/model/header.h"

#include "support/model/tables.h"

namespace test::model {

namespace {

bool Acceptable(const HeaderBytes& bytes) {
    const bool sync = bytes[0] == 0xFF && (bytes[1] & 0xE0) == 0xE0;
    const int layerField = (bytes[1] >> 1) & 3;
    const int bitrateIndex = bytes[2] >> 4;
    const int sampleRateIndex = (bytes[2] >> 2) & 3;
    return sync && layerField != 0 && layerField != 3 && bitrateIndex != 15 && sampleRateIndex != 3 &&
           bitrateIndex != 0;
}

int FrameBytes(const Header& header) {
    int length = 144000 * header.kbps / header.sampleRate;
    if (header.lsf && header.layer != 2)
        length /= 2;
    return length + (header.padding ? 1 : 0);
}

Header Decode(const HeaderBytes& bytes) {
    const Tables& tables = StandardTables();
    Header header;
    header.lsf = (bytes[1] & 0x08) == 0;
    header.mpeg25 = (bytes[1] & 0x18) == 0;
    header.layer = 4 - ((bytes[1] >> 1) & 3);
    header.crc = (bytes[1] & 1) == 0;
    header.bitrateIndex = bytes[2] >> 4;
    header.sampleRateIndex = (bytes[2] >> 2) & 3;
    header.padding = (bytes[2] & 2) != 0;
    header.mode = bytes[3] >> 6;
    header.modeExtension = (bytes[3] >> 4) & 3;
    header.channels = header.mode == kSingleChannel ? 1 : 2;
    const auto& rates = header.layer == 2 ? tables.kbpsLayer2 : tables.kbpsLayer3;
    header.kbps = rates[header.lsf ? 1 : 0][static_cast<std::size_t>(header.bitrateIndex)];
    header.sampleRate = tables.sampleRates[static_cast<std::size_t>(header.VersionIndex())]
                                          [static_cast<std::size_t>(header.sampleRateIndex)];
    header.frameBytes = FrameBytes(header);
    return header;
}

} // namespace

std::optional<Header> ParseHeader(const HeaderBytes& bytes, const std::optional<Header>& previous) {
    if (!Acceptable(bytes))
        return std::nullopt;
    const Header header = Decode(bytes);
    if (previous && (header.lsf != previous->lsf || header.layer != previous->layer ||
                     header.sampleRateIndex != previous->sampleRateIndex))
        return std::nullopt;
    return header;
}

int SearchStep(const HeaderBytes& bytes) {
    if (bytes[1] == 0xFF && (bytes[2] & 0xE0) == 0xE0)
        return 1;
    if (bytes[2] == 0xFF && (bytes[3] & 0xE0) == 0xE0)
        return 2;
    return bytes[3] != 0xFF ? 4 : 3;
}

} // namespace test::model
