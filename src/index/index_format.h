/// The index file: the byte position and length of every frame of a media file after the first.
///
/// One 28-byte header followed by packed 8-byte entries, all little-endian; no magic number and no checksum.
/// An index that is present is trusted: nothing in it is compared with the media file, so whoever uses its
/// numbers checks them before use.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace trnmpa {

class CMpAudioFrameBufferReader;

inline constexpr std::size_t kIndexHeaderBytes = 28;
inline constexpr std::size_t kIndexEntryBytes = 8;

/// The header at offset 0. All zeros in the index of a run that was cancelled or failed.
struct MpaIndexHeader {
    std::uint32_t frameCount = 0;      ///< entries that follow
    std::uint32_t mediaFileSize = 0;   ///< bytes, when the media file was indexed
    std::uint8_t layer = 0;            ///< 1, 2 or 3, of the first frame
    std::uint8_t version = 0;          ///< 1 for MPEG-1, 2 for MPEG-2 and MPEG 2.5
    std::uint16_t channels = 0;        ///< 1 or 2
    std::uint32_t bitRate = 0;         ///< bit/s
    std::uint32_t sampleRate = 0;      ///< Hz
    std::uint16_t bitsPerSample = 0;   ///< 16
    std::uint16_t frameBytes = 0;      ///< length of the first frame
    std::uint32_t samplesPerFrame = 0; ///< per channel

    bool operator==(const MpaIndexHeader&) const = default;
};

/// One frame. Entry 0 is the second frame of the stream: the frame described by the header has none.
struct MpaIndexEntry {
    std::uint32_t frameOffset = 0; ///< byte position of the frame in the media file
    std::uint32_t frameBytes = 0;

    bool operator==(const MpaIndexEntry&) const = default;
};

/// The name of the index of a media file: ".idx" behind its full name.
std::wstring IndexPathFor(const std::wstring& mediaPath);

/// The records as they stand in the file.
MpaIndexHeader ParseIndexHeader(std::span<const std::uint8_t, kIndexHeaderBytes> bytes);
MpaIndexEntry ParseIndexEntry(std::span<const std::uint8_t, kIndexEntryBytes> bytes);

/// The same the other way round.
std::array<std::uint8_t, kIndexHeaderBytes> FormatIndexHeader(const MpaIndexHeader& header);
std::array<std::uint8_t, kIndexEntryBytes> FormatIndexEntry(const MpaIndexEntry& entry);

/// Reads the header at offset 0, wherever `index` stands. What a short file lacks reads as zeros.
MpaIndexHeader ReadIndexHeader(CMpAudioFrameBufferReader& index);

/// Reads the entries behind the header, `claimedCount` or as many whole ones as the file holds, whichever is
/// less. Takes memory for the entries that are there, never for those that are only claimed.
std::vector<MpaIndexEntry> ReadIndexEntries(CMpAudioFrameBufferReader& index, std::uint32_t claimedCount);

} // namespace trnmpa
