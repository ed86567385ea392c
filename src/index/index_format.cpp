#include "index/index_format.h"

#include "fileio/frame_buffer_reader.h"

#include <algorithm>

namespace trnmpa {

namespace {

constexpr std::size_t kChunkEntries = 4096;

std::uint16_t Unsigned16(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return static_cast<std::uint16_t>(bytes[offset] | bytes[offset + 1] << 8);
}

std::uint32_t Unsigned32(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return Unsigned16(bytes, offset) | static_cast<std::uint32_t>(Unsigned16(bytes, offset + 2)) << 16;
}

void Put16(std::span<std::uint8_t> bytes, std::size_t offset, std::uint16_t value) {
    bytes[offset] = static_cast<std::uint8_t>(value);
    bytes[offset + 1] = static_cast<std::uint8_t>(value >> 8);
}

void Put32(std::span<std::uint8_t> bytes, std::size_t offset, std::uint32_t value) {
    Put16(bytes, offset, static_cast<std::uint16_t>(value));
    Put16(bytes, offset + 2, static_cast<std::uint16_t>(value >> 16));
}

/// The entries that the file has room for, at most `claimedCount`.
std::size_t EntriesPresent(CMpAudioFrameBufferReader& index, std::uint32_t claimedCount) {
    const std::int64_t bytes = index.GetLength() - static_cast<std::int64_t>(kIndexHeaderBytes);
    const std::int64_t present =
        std::max<std::int64_t>(bytes, 0) / static_cast<std::int64_t>(kIndexEntryBytes);
    return static_cast<std::size_t>(std::min<std::int64_t>(present, claimedCount));
}

} // namespace

std::wstring IndexPathFor(const std::wstring& mediaPath) {
    return mediaPath + L".idx";
}

MpaIndexHeader ParseIndexHeader(std::span<const std::uint8_t, kIndexHeaderBytes> bytes) {
    MpaIndexHeader header;
    header.frameCount = Unsigned32(bytes, 0);
    header.mediaFileSize = Unsigned32(bytes, 4);
    header.layer = bytes[8];
    header.version = bytes[9];
    header.channels = Unsigned16(bytes, 10);
    header.bitRate = Unsigned32(bytes, 12);
    header.sampleRate = Unsigned32(bytes, 16);
    header.bitsPerSample = Unsigned16(bytes, 20);
    header.frameBytes = Unsigned16(bytes, 22);
    header.samplesPerFrame = Unsigned32(bytes, 24);
    return header;
}

MpaIndexEntry ParseIndexEntry(std::span<const std::uint8_t, kIndexEntryBytes> bytes) {
    return {Unsigned32(bytes, 0), Unsigned32(bytes, 4)};
}

std::array<std::uint8_t, kIndexHeaderBytes> FormatIndexHeader(const MpaIndexHeader& header) {
    std::array<std::uint8_t, kIndexHeaderBytes> bytes = {};
    Put32(bytes, 0, header.frameCount);
    Put32(bytes, 4, header.mediaFileSize);
    bytes[8] = header.layer;
    bytes[9] = header.version;
    Put16(bytes, 10, header.channels);
    Put32(bytes, 12, header.bitRate);
    Put32(bytes, 16, header.sampleRate);
    Put16(bytes, 20, header.bitsPerSample);
    Put16(bytes, 22, header.frameBytes);
    Put32(bytes, 24, header.samplesPerFrame);
    return bytes;
}

std::array<std::uint8_t, kIndexEntryBytes> FormatIndexEntry(const MpaIndexEntry& entry) {
    std::array<std::uint8_t, kIndexEntryBytes> bytes = {};
    Put32(bytes, 0, entry.frameOffset);
    Put32(bytes, 4, entry.frameBytes);
    return bytes;
}

MpaIndexHeader ReadIndexHeader(CMpAudioFrameBufferReader& index) {
    std::array<std::uint8_t, kIndexHeaderBytes> bytes = {};
    index.SetPosition(0);
    index.Read(bytes.data(), static_cast<int>(bytes.size()));
    return ParseIndexHeader(bytes);
}

std::vector<MpaIndexEntry> ReadIndexEntries(CMpAudioFrameBufferReader& index, std::uint32_t claimedCount) {
    const std::size_t count = EntriesPresent(index, claimedCount);
    std::vector<MpaIndexEntry> entries;
    entries.reserve(count);
    std::vector<std::uint8_t> chunk(std::min(count, kChunkEntries) * kIndexEntryBytes);
    index.SetPosition(kIndexHeaderBytes);
    while (entries.size() < count) {
        const std::size_t wanted = std::min(count - entries.size(), kChunkEntries);
        const std::size_t read =
            index.Read(chunk.data(), static_cast<int>(wanted * kIndexEntryBytes)) / kIndexEntryBytes;
        for (std::size_t i = 0; i < read; ++i)
            entries.push_back(
                ParseIndexEntry(std::span(chunk).subspan(i * kIndexEntryBytes).first<kIndexEntryBytes>()));
        if (read < wanted)
            break;
    }
    return entries;
}

} // namespace trnmpa
