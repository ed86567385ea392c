#include "mpa/id3v2_tag.h"

#include "mpa/synthetic_stream.h"

#include <gmock/gmock.h>

using namespace trnmpa;
using test::Bytes;
using test::MemorySource;
using test::TagHeader;
using namespace std::string_view_literals;

namespace {

struct Answer {
    bool isGood;
    std::int64_t offset;

    bool operator==(const Answer&) const = default;
};

void PrintTo(const Answer& answer, std::ostream* out) {
    *out << (answer.isGood ? "true, " : "false, ") << answer.offset;
}

Answer Probe(const Bytes& bytes) {
    MemorySource source(bytes);
    std::int64_t offset = -1;
    const bool isGood = SkipId3v2Tag(source, offset);
    return {isGood, offset};
}

Answer Reader(const Bytes& bytes) {
    MemorySource source(bytes);
    std::int64_t offset = -1;
    const bool isGood = SkipTagAndPadding(source, offset);
    return {isGood, offset};
}

/// A tag that says `size` and a file that goes on to `end`, where a byte 0xFF stands.
Bytes TaggedFile(const Bytes& tag, std::size_t end) {
    Bytes bytes = tag;
    bytes.resize(end, 0);
    bytes.push_back(0xFF);
    return bytes;
}

Bytes WithIdentifier(std::string_view text) {
    Bytes tag = TagHeader(0, 0, 0, 20);
    test::PutText(tag, 0, text);
    return TaggedFile(tag, 30);
}

} // namespace

TEST(ProbeTag, SizeIsAddedToItsHeader) {
    EXPECT_EQ(Probe(TagHeader(0, 0, 2, 1)), (Answer{true, 267}));
    EXPECT_EQ(Probe(TagHeader(0, 0, 0, 0)), (Answer{true, 10}));
}

TEST(ProbeTag, SizeBytesKeepTheirHighBit) {
    EXPECT_EQ(Probe(TagHeader(0, 0, 0, 0xFF)), (Answer{true, 255 + 10}));
    EXPECT_EQ(Probe(TagHeader(0, 0, 0x80, 0)), (Answer{true, 128 * 128 + 10}));
}

TEST(ProbeTag, HugeSizesFailAndStay) {
    EXPECT_EQ(Probe(TagHeader(0x7F, 0x7F, 0x7F, 0x7F)), (Answer{true, 0x0FFFFFFF + 10}));
    EXPECT_EQ(Probe(TagHeader(0x80, 0, 0, 0)), (Answer{false, 0x10000000}));
    EXPECT_EQ(Probe(TagHeader(0xFF, 0xFF, 0xFF, 0xFF)), (Answer{false, 255LL * (2097152 + 16384 + 128 + 1)}));
}

TEST(ProbeTag, IdentifierInAnyCase) {
    for (const auto text : {"ID3\x04"sv, "id3\x04"sv, "Id3\x04"sv, "iD3\0"sv, "ID3\xFF"sv})
        EXPECT_EQ(Probe(WithIdentifier(text)), (Answer{true, 30})) << text;
}

TEST(ProbeTag, OtherTextsAreNoTag) {
    for (const auto text :
         {"ID33"sv, "id33"sv, "ID4\x03"sv, "ID\0\x03"sv, "XD3\x03"sv, "IE3\x03"sv, "\0ID3"sv, "3333"sv})
        EXPECT_EQ(Probe(WithIdentifier(text)), (Answer{true, 0})) << text;
}

TEST(ProbeTag, ShortFilesReadAsZeros) {
    EXPECT_EQ(Probe({}), (Answer{true, 0}));
    EXPECT_EQ(Probe({'I', 'D'}), (Answer{true, 0}));
    EXPECT_EQ(Probe({'I', 'D', '3'}), (Answer{true, 10}));
    EXPECT_EQ(Probe({'I', 'D', '3', 3, 0, 0, 0, 1}), (Answer{true, 128 * 128 + 10}));
}

TEST(ReaderTag, NoTagStartsAtZero) {
    EXPECT_EQ(Reader({}), (Answer{true, 0}));
    EXPECT_EQ(Reader({0, 0, 0, 0, 0}), (Answer{true, 0}));
    EXPECT_EQ(Reader({0xFF, 0xFB, 0x90, 0}), (Answer{true, 0}));
    EXPECT_EQ(Reader({'I', 'D', '4', 0}), (Answer{true, 0}));
}

TEST(ReaderTag, GoesOnToTheFirstOnes) {
    EXPECT_EQ(Reader(TaggedFile(TagHeader(0, 0, 2, 1), 267)), (Answer{true, 267}));
    EXPECT_EQ(Reader(TaggedFile(TagHeader(0, 0, 2, 1), 268)), (Answer{true, 268}));
    EXPECT_EQ(Reader(TaggedFile(TagHeader(0, 0, 2, 1), 300000)), (Answer{true, 300000}));
}

TEST(ReaderTag, OnesInsideTheTagAreNotSeen) {
    Bytes bytes = TaggedFile(TagHeader(0, 0, 2, 1), 400);
    bytes[266] = 0xFF;
    EXPECT_EQ(Reader(bytes), (Answer{true, 400}));
    bytes[267] = 0xFF;
    EXPECT_EQ(Reader(bytes), (Answer{true, 267}));
}

TEST(ReaderTag, SizeBytesLoseTheirHighBit) {
    EXPECT_EQ(Reader(TaggedFile(TagHeader(0x80, 0x80, 0x82, 0x81), 267)), (Answer{true, 267}));
}

TEST(ReaderTag, IdentifierInAnyCaseWithAnyVersion) {
    for (const auto text : {"ID3\x04"sv, "id3\x04"sv, "ID33"sv, "iD3\xFF"sv})
        EXPECT_EQ(Reader(WithIdentifier(text)), (Answer{true, 30})) << text;
}

TEST(ReaderTag, NoOnesUpToTheEndFails) {
    Bytes bytes = TaggedFile(TagHeader(0, 0, 2, 1), 300);
    bytes.back() = 0xFE;
    EXPECT_FALSE(Reader(bytes).isGood);
    EXPECT_FALSE(Reader({'I', 'D', '3'}).isGood);
}

TEST(ReaderTag, SizeBehindTheEndFails) {
    EXPECT_FALSE(Reader(TaggedFile(TagHeader(0x7F, 0x7F, 0x7F, 0x7F), 5000)).isGood);
}

TEST(ReaderTag, StartsAtTheStartWhereverTheSourceStands) {
    MemorySource source(TaggedFile(TagHeader(0, 0, 2, 1), 267));
    source.SetPosition(100);
    std::int64_t dataStart = -1;
    EXPECT_TRUE(SkipTagAndPadding(source, dataStart));
    EXPECT_EQ(dataStart, 267);
}
