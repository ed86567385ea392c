/// `mpatool check` against files whose damage is known, and real files without any.
#include "mpatool/check/stream_check.h"
#include "real/real_streams.h"
#include "support/damage/damage.h"
#include "support/damage/truth_text.h"
#include "support/test_files.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <tuple>
#include <vector>

using namespace test;
using mpatool::Finding;
using mpatool::FindingKind;
using mpatool::StreamCheckResult;

namespace {

/// Offset, end, and how many bytes or frames.
using Place = std::tuple<std::int64_t, std::int64_t, std::int64_t>;

class CheckTruth : public testing::Test {
protected:
    StreamCheckResult Check(const Bytes& file) const {
        return mpatool::CheckStream(Wide(folder_.Add("stream.mp3", file)));
    }

    static std::vector<Finding> Damage(const StreamCheckResult& result) {
        std::vector<Finding> findings = result.findings.Sorted();
        std::erase_if(findings, [](const Finding& finding) { return !IsDamage(finding.kind); });
        return findings;
    }

    static std::string Describe(const std::vector<Finding>& findings) {
        std::string text;
        for (const Finding& finding : findings)
            text += std::to_string(finding.offset) + " " + FindingText(finding) + "\n";
        return text;
    }

    ScratchFolder folder_;
};

bitstream::StreamOptions Options(bitstream::Version version, int layer, int mode) {
    bitstream::StreamOptions options;
    options.seed = 21;
    options.frames = 30;
    options.version = version;
    options.layer = layer;
    options.mode = mode;
    options.modeExtensions = {0, 1, 2, 3};
    options.bitrateIndices = {8};
    options.crc = true;
    return options;
}

/// Written streams with CRC words, of every kind of frame that protects other bits.
std::vector<bitstream::Stream> WrittenStreams() {
    using bitstream::Version;
    std::vector<bitstream::Stream> streams;
    for (const Version version : {Version::kMpeg1, Version::kMpeg2, Version::kMpeg25})
        for (const int layer : {2, 3})
            for (const int mode : {model::kStereo, model::kJointStereo, model::kSingleChannel})
                streams.push_back(bitstream::WriteStream(Options(version, layer, mode)));
    return streams;
}

CleanStream Real(const char* file, std::size_t frames = 60) {
    return FirstFramesOf(ReadFile(RealStreamNamed(file).Path()), frames);
}

/// Whether the file differs there from frames in a row.
struct Scar {
    std::int64_t begin = 0;
    std::int64_t end = 0;
};

std::vector<Scar> ScarsOf(const DamagedFile& file, const CleanStream& stream) {
    std::vector<Scar> scars;
    std::size_t wanted = 0;
    const auto add = [&](std::size_t begin, std::size_t end) {
        scars.push_back({static_cast<std::int64_t>(begin), static_cast<std::int64_t>(end)});
    };
    for (const Piece& piece : file.Pieces()) {
        if (!piece.IsWhole())
            add(piece.offset, piece.End());
        else if (piece.stream != 0 || piece.frame != wanted)
            add(piece.offset, piece.offset);
        wanted = piece.frame + 1;
    }
    if (wanted != stream.frames.size())
        add(file.Size(), file.Size());
    return scars;
}

bool Meets(const Finding& finding, const Scar& scar, std::int64_t distance) {
    return finding.offset - distance <= scar.end && scar.begin <= finding.end + distance;
}

bool IsOf(const StreamCheckResult& result, const CleanStream& stream) {
    const model::Header& header = stream.frames.front().header;
    return result.format.layer == header.layer && result.format.sampleRate == header.sampleRate &&
           result.format.channels == header.channels;
}

/// A piece that no reader can overlook.
bool IsPlain(const DamagedFile& file, const Piece& piece) {
    if (piece.kind != PieceKind::kSpoiledFrame)
        return !piece.IsWhole();
    if (piece.isOnlyCrcChanged)
        return true;
    if (!piece.isHeaderChanged)
        return false;
    const auto at = file.Content().begin() + static_cast<std::ptrdiff_t>(piece.offset);
    const auto header = model::ParseHeader({at[0], at[1], at[2], at[3]}, std::nullopt);
    const model::Header& was = file.FrameOf(piece).header;
    return !header || header->frameBytes != was.frameBytes || header->lsf != was.lsf ||
           header->layer != was.layer || header->sampleRate != was.sampleRate;
}

} // namespace

TEST_F(CheckTruth, RealStreamsHaveNoDamage) {
    int checked = 0;
    for (const RealStream& stream : RealStreams()) {
        if (stream.IsFreeFormat())
            continue;
        const StreamCheckResult result = mpatool::CheckStream(Wide(stream.Path()));
        EXPECT_EQ(Describe(Damage(result)), "") << stream.file;
        EXPECT_EQ(result.frames, stream.frames + (stream.HasDecodedTagFrame() ? 1 : 0)) << stream.file;
        EXPECT_EQ(Describe(result.findings.Sorted()).empty(), !stream.IsLowRateLayer2()) << stream.file;
        ++checked;
    }
    EXPECT_GT(checked, 60);
}

TEST_F(CheckTruth, WrittenStreamsWithCrcHaveNoDamage) {
    for (const bitstream::Stream& stream : WrittenStreams()) {
        const StreamCheckResult result = Check(stream.bytes);
        EXPECT_EQ(Describe(Damage(result)), "") << "layer " << stream.frames[0].header.layer;
        EXPECT_EQ(result.frames, 30);
    }
}

// Between frames, far enough from each other; zeros, so that no search stops in them.
TEST_F(CheckTruth, EveryStretchOfJunkIsFoundInItsPlace) {
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        bitstream::Random random(seed);
        DamagedFile file(Real(seed % 2 == 0 ? "vbr-44-v2-untagged.mp3" : "l2-44-160-crc.mp2"));
        const auto frames = file.Pieces();
        std::vector<Place> junk;
        for (std::size_t frame = 50; frame >= 5; frame -= 3 + static_cast<std::size_t>(random.Below(2))) {
            const auto length = static_cast<std::size_t>(random.Between(1, seed < 15 ? 500 : kMostJunkBytes));
            file.Insert(frames[frame].offset, Bytes(length, 0));
        }
        for (const Piece& piece : file.Pieces())
            if (piece.kind == PieceKind::kJunk)
                junk.emplace_back(piece.offset, piece.End(), piece.length);
        std::vector<Place> found;
        for (const Finding& finding : Damage(Check(file.Content())))
            if (finding.kind == FindingKind::kJunk)
                found.emplace_back(finding.offset, finding.end, finding.bytes);
            else
                EXPECT_EQ(finding.kind, FindingKind::kSearchEnds);
        EXPECT_EQ(found, junk);
    }
}

TEST_F(CheckTruth, EveryWrongCrcIsFoundAndNoOther) {
    for (const bitstream::Stream& written : WrittenStreams()) {
        const CleanStream stream = CleanStreamOf(written);
        const DamagedFile file = Damaged(stream, stream, {DamageKind::kWrongCrc}, 7);
        std::vector<Place> wrong;
        for (const Piece& piece : file.Pieces()) {
            if (!piece.isOnlyCrcChanged)
                continue;
            const auto offset = static_cast<std::int64_t>(piece.offset);
            if (wrong.empty() || std::get<1>(wrong.back()) != offset)
                wrong.emplace_back(offset, offset, 0);
            std::get<1>(wrong.back()) = static_cast<std::int64_t>(piece.End());
            ++std::get<2>(wrong.back());
        }
        std::vector<Place> found;
        for (const Finding& finding : Damage(Check(file.Content()))) {
            EXPECT_EQ(finding.kind, FindingKind::kCrc);
            found.emplace_back(finding.offset, finding.end, finding.frames);
        }
        EXPECT_EQ(found, wrong);
        EXPECT_FALSE(found.empty());
    }
}

TEST_F(CheckTruth, BitsThatTheCrcProtectsFailItAndOthersDoNot) {
    for (const bitstream::Stream& written : WrittenStreams()) {
        const CleanStream stream = CleanStreamOf(written);
        const bitstream::FrameRecord& frame = written.frames[9];
        const auto fails = [&](std::size_t byte, int bit) {
            DamagedFile file(stream);
            file.FlipBit(frame.offset + byte, bit);
            return Check(file.Content()).findings.Count(FindingKind::kCrc) > 0;
        };
        EXPECT_TRUE(fails(3, 3)) << "copyright";
        EXPECT_TRUE(fails(6, 7)) << "the first bit behind the CRC word";
        EXPECT_FALSE(fails(static_cast<std::size_t>(frame.length) - 1, 0)) << "the last of all";
        if (frame.header.layer == 3) {
            const std::size_t end = 6 + static_cast<std::size_t>(frame.header.SideInfoBytes());
            EXPECT_TRUE(fails(end - 1, 0));
            EXPECT_FALSE(fails(end, 7));
        }
    }
}

// The frame behind a lost one lacks what its main data want beyond what the frames before the gap left over.
TEST_F(CheckTruth, MainDataOfMissingFramesAreMissed) {
    bitstream::StreamOptions options = Options(bitstream::Version::kMpeg1, 3, model::kStereo);
    options.layer3.reservoir = bitstream::ReservoirUse::kRandom;
    const bitstream::Stream written = bitstream::WriteStream(options);
    int underruns = 0;
    for (std::size_t lost = 1; lost + 1 < written.frames.size(); ++lost) {
        const bitstream::FrameRecord& before = written.frames[lost - 1];
        const bitstream::FrameRecord& behind = written.frames[lost + 1];
        const int ownBytes = before.length - 6 - before.sideInfoBytes;
        const int leftOver = ownBytes - (before.mainDataBytes - before.mainDataBegin);
        DamagedFile file{CleanStreamOf(written)};
        file.Remove(written.frames[lost].offset, behind.offset);
        const auto findings = Damage(Check(file.Content()));
        const int missing = behind.mainDataBegin - leftOver;
        ASSERT_EQ(findings.size(), missing > 0 ? 1u : 0u) << lost << "\n" << Describe(findings);
        if (missing <= 0)
            continue;
        EXPECT_EQ(findings[0].kind, FindingKind::kUnderrun);
        EXPECT_EQ(findings[0].offset, static_cast<std::int64_t>(written.frames[lost].offset));
        EXPECT_THAT(findings[0].detail, testing::HasSubstr(" lacks " + std::to_string(missing) + " byte"));
        ++underruns;
    }
    EXPECT_GT(underruns, 3);
}

TEST_F(CheckTruth, DamageOfAnyKindIsSeenWhereItIsAndNowhereElse) {
    constexpr std::int64_t kNear = 2 * 1045;
    const CleanStream other = Real("low-22-64.mp3");
    int files = 0;
    int misled = 0;
    for (const char* name :
         {"crc-44-128.mp3", "vbr-44-v2-untagged.mp3", "low-11-32.mp3", "l2-44-160-crc.mp2"}) {
        const CleanStream stream = Real(name);
        for (std::uint64_t seed = 0; seed < 60; ++seed) {
            const DamagedFile file =
                Damaged(stream, other, {std::begin(kDamageKinds), std::end(kDamageKinds)}, seed);
            SCOPED_TRACE(name + std::string(", seed ") + std::to_string(seed) + "\n" + TruthText(file));
            const StreamCheckResult result = Check(file.Content());
            const std::vector<Finding> findings = Damage(result);
            const auto scars = ScarsOf(file, stream);
            // Where a false header at the start sets the format, all of the stream is false.
            const bool hasFormat = IsOf(result, stream);
            const bool isMisled = !hasFormat && !IsOf(result, other);
            EXPECT_TRUE(!isMisled || result.findings.Count(FindingKind::kUnreadable) > 0);
            misled += isMisled ? 1 : 0;
            for (const Finding& finding : hasFormat ? findings : std::vector<Finding>())
                ASSERT_TRUE(std::ranges::any_of(
                    scars, [&](const Scar& scar) { return Meets(finding, scar, 3 * kNear); }))
                    << "without reason:\n"
                    << Describe({finding});
            for (const Piece& piece : file.Pieces()) {
                const Scar scar{static_cast<std::int64_t>(piece.offset),
                                static_cast<std::int64_t>(piece.End())};
                ASSERT_TRUE(
                    !IsPlain(file, piece) ||
                    std::ranges::any_of(findings,
                                        [&](const Finding& finding) { return Meets(finding, scar, kNear); }))
                    << "overlooked at " << piece.offset << ":\n"
                    << Describe(findings);
            }
            ++files;
        }
    }
    EXPECT_EQ(files, 240);
    EXPECT_LT(misled, 24);
}
