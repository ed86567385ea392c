/// The module on damaged files whose truth is known: what it finds, what it delivers, where jumps land.
#include "index/builder/index_model.h"
#include "mpa/file_header_sources.h"
#include "mpa/frame_walk.h"
#include "mpa/stream_start.h"
#include "reader/damage_truth.h"
#include "reader/engine.h"
#include "reader/expected_stream.h"
#include "reader/reader_streams.h"
#include "real/real_streams.h"
#include "support/damage/damage.h"
#include "support/damage/truth_text.h"
#include "trcommontoolsr/file_access.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <span>
#include <string>
#include <tuple>
#include <vector>

using namespace test;
using trnmpa::MpaIndexEntry;

namespace {

/// Files a stream; more with TRN_DAMAGE_SEEDS.
std::uint64_t Seeds() {
    const char* text = std::getenv("TRN_DAMAGE_SEEDS");
    return text != nullptr ? std::stoull(text) : 8;
}

constexpr int kFrames = 18;

CleanStream Written(bitstream::Version version, int layer, int mode, std::vector<int> rates, bool crc) {
    bitstream::StreamOptions options;
    options.seed = 11;
    options.frames = kFrames;
    options.version = version;
    options.layer = layer;
    options.mode = mode;
    options.bitrateIndices = std::move(rates);
    options.crc = crc;
    options.layer3.blocks = {{0}, {1}, {2}, {3}};
    return CleanStreamOf(bitstream::WriteStream(options));
}

struct Source {
    std::string name;
    CleanStream stream;
    Pcm pcm; ///< of all frames in order, nothing left out
};

Source Make(const std::string& name, CleanStream stream) {
    Pcm pcm = Delivered(stream.bytes, 0);
    return {name, std::move(stream), std::move(pcm)};
}

const std::vector<Source>& Sources() {
    using bitstream::Version;
    using namespace model;
    static const std::vector<Source> sources = [] {
        std::vector<Source> made;
        made.push_back(Make("layer3", Written(Version::kMpeg1, 3, kJointStereo, {9}, true)));
        made.push_back(Make("variable", Written(Version::kMpeg1, 3, kStereo, {1, 2, 9, 14}, false)));
        made.push_back(Make("mono", Written(Version::kMpeg1, 3, kSingleChannel, {5, 6}, false)));
        made.push_back(Make("mpeg2", Written(Version::kMpeg2, 3, kStereo, {6, 8}, true)));
        made.push_back(Make("mpeg25", Written(Version::kMpeg25, 3, kStereo, {6, 9}, false)));
        made.push_back(Make("layer2", Written(Version::kMpeg1, 2, kJointStereo, {8}, true)));
        made.push_back(Make("low layer2", Written(Version::kMpeg2, 2, kStereo, {8}, false)));
        for (const char* file : {"cbr-44-128.mp3", "crc-44-128.mp3", "vbr-44-v2.mp3", "mono-44-64.mp3",
                                 "low-22-64.mp3", "low-11-32.mp3", "l2-44-160-crc.mp2"})
            made.push_back(Make(file, FirstFramesOf(ReadFile(RealStreamNamed(file).Path()), kFrames)));
        return made;
    }();
    return sources;
}

int ValuesPerFrame(const model::Header& header) {
    return (header.layer == 3 && header.lsf ? 576 : 1152) * header.channels;
}

/// What happened over all files, so that no check passes for want of cases.
struct Counts {
    int wholeDelivered = 0;
    int otherDelivered = 0;
    int wholeMissing = 0;
    int settled = 0; ///< frames whose PCM is the clean stream's
    int refused = 0;
    int jumps = 0;
    int withoutIndex = 0;
};

/// One damaged file.
class DamagedReading {
public:
    DamagedReading(const Source& source, const Source& other, std::uint64_t seed, Counts& counts)
        : sources_{&source, &other}, counts_(counts), random_(seed),
          file_(
              Damaged(source.stream, other.stream, {std::begin(kDamageKinds), std::end(kDamageKinds)}, seed)),
          truth_(file_) {}

    std::string Text() const { return TruthText(file_); }

    void Check() {
        path_ = folder_.Add("stream.mp3", file_.Content());
        ASSERT_NO_FATAL_FAILURE(CheckWithoutIndex());
        ASSERT_NO_FATAL_FAILURE(CheckIndex());
    }

private:
    const Bytes& Content() const { return file_.Content(); }

    void CheckWithoutIndex() {
        const ReadingModel reading = ReadingWithoutIndex(Content());
        ASSERT_EQ(UnexplainedReading(truth_, reading), "");
        ASSERT_EQ(UnexplainedStart(truth_, reading), "");
        ASSERT_NO_FATAL_FAILURE(CheckWalk(reading));
        Engine engine(path_);
        ASSERT_EQ(engine.Opened() == trnmpa::kSuccess, reading.opens) << engine.Opened();
        counts_.refused += !reading.opens;
        if (!reading.opens)
            return;
        const int skipped = reading.format.layer == 3 ? kDecoderDelay : 0;
        const Pcm decoded = Delivered(Joined(reading), 0);
        CheckSettledFrames(reading, decoded);
        const auto left = std::min<std::size_t>(static_cast<std::size_t>(skipped * reading.format.channels),
                                                decoded.size());
        ExpectInOrder(engine, reading,
                      Pcm(decoded.begin() + static_cast<std::ptrdiff_t>(left), decoded.end()));
    }

    Bytes Joined(const ReadingModel& reading) const {
        Bytes bytes;
        for (const TakenFrame& frame : reading.Delivered()) {
            const auto begin = Content().begin() + static_cast<std::ptrdiff_t>(frame.offset);
            bytes.insert(bytes.end(), begin, begin + static_cast<std::ptrdiff_t>(frame.taken));
        }
        return bytes;
    }

    /// The walk of the tool sees what the reader delivers.
    void CheckWalk(const ReadingModel& reading) {
        TRCT_FileAccess file;
        ASSERT_EQ(file.OpenFile(Wide(path_).c_str(), TRCT_OPEN_FOR_READING), 1);
        trnmpa::FileAccessHeaderSource source(file);
        std::vector<std::int64_t> walked;
        const auto start = trnmpa::LocateAudioStart(source);
        if (start && reading.opens) {
            trnmpa::FrameWalk walk(source, start->dataStart, start->firstHeader);
            while (const auto frame = walk.Next())
                walked.push_back(frame->offset);
        }
        std::vector<std::int64_t> expected;
        for (const TakenFrame& frame : reading.Delivered())
            expected.push_back(static_cast<std::int64_t>(frame.offset));
        ASSERT_EQ(walked, expected);
    }

    /// In order everything, then the end: silence, or a fault where a CRC word is cut.
    static void ExpectInOrder(Engine& engine, const ReadingModel& reading, const Pcm& expected) {
        constexpr std::uint32_t kChunk = 5000;
        const std::size_t channels = engine.Format().nChannels;
        const auto samples = static_cast<std::int64_t>(expected.size() / channels);
        Pcm read;
        for (std::int64_t at = 0; at < samples; at += kChunk) {
            const auto count = static_cast<std::uint32_t>(std::min<std::int64_t>(kChunk, samples - at));
            const Pcm part = engine.Read(at, count);
            read.insert(read.end(), part.begin(), part.end());
        }
        ASSERT_TRUE(read == Pcm(expected.begin(), expected.begin() + samples * engine.Format().nChannels))
            << "other samples in order";
        const Answer end = engine.Ask(samples, 1);
        if (reading.isCutInCrcWord)
            EXPECT_EQ(end.result, trnmpa::kUnexpectedException);
        else
            EXPECT_EQ(end.pcm, Pcm(channels, 0)) << "behind the end";
    }

    /// Whole frames with enough whole frames before them sound as they did.
    void CheckSettledFrames(const ReadingModel& reading, const Pcm& decoded) {
        const auto frames = reading.Delivered();
        const auto values = static_cast<std::ptrdiff_t>(ValuesPerFrame(reading.format));
        ASSERT_EQ(decoded.size(), frames.size() * static_cast<std::size_t>(values));
        for (std::size_t i = 0; i < frames.size(); ++i) {
            const bool isWhole = truth_.IsWholeFrame(frames[i].offset, frames[i].taken);
            ++(isWhole ? counts_.wholeDelivered : counts_.otherDelivered);
            if (!isWhole || !IsSettled(frames, i))
                continue;
            const Piece& piece = truth_.At(frames[i].offset);
            const Pcm& clean = sources_[piece.stream]->pcm;
            const auto ours = decoded.begin() + static_cast<std::ptrdiff_t>(i) * values;
            const auto theirs = clean.begin() + static_cast<std::ptrdiff_t>(piece.frame) * values;
            ASSERT_TRUE(std::equal(ours, ours + values, theirs)) << "frame at byte " << frames[i].offset;
            ++counts_.settled;
        }
        counts_.wholeMissing += static_cast<int>(std::ranges::count_if(truth_.Pieces(), &Piece::IsWhole));
        counts_.wholeMissing -= static_cast<int>(std::ranges::count_if(
            frames, [&](const TakenFrame& frame) { return truth_.IsWholeFrame(frame.offset, frame.taken); }));
    }

    /// The frames before are the stream's own, as far back as main data, overlap and filter bank reach.
    bool IsSettled(const std::vector<TakenFrame>& frames, std::size_t index) const {
        const Piece& piece = truth_.At(frames[index].offset);
        const bool isLow = frames[index].header.lsf;
        const bool isLayer3 = frames[index].header.layer == 3;
        const std::size_t reach = !isLayer3 ? 0 : isLow ? 255 : 511;
        const std::size_t decoded = isLayer3 && isLow ? 2 : 1;
        std::size_t mainData = 0;
        for (std::size_t back = 1; back <= index && back <= piece.frame; ++back) {
            const TakenFrame& frame = frames[index - back];
            const Piece& before = truth_.At(frame.offset);
            if (!truth_.IsWholeFrame(frame.offset, frame.taken) || before.stream != piece.stream ||
                before.frame + back != piece.frame)
                return false;
            if (back > decoded)
                mainData += frame.taken - 6 - static_cast<std::size_t>(frame.header.SideInfoBytes());
            if (back >= decoded && mainData >= reach)
                return true;
        }
        return false;
    }

    void CheckIndex() {
        const IndexModel model = ModelOfIndexing(Content());
        if (!model.opens) {
            EXPECT_THROW(BuildIndex(path_), std::runtime_error);
            ++counts_.withoutIndex;
            return;
        }
        const Bytes index = BuildIndex(path_);
        ASSERT_EQ(index, model.index) << "another list of frames";
        std::vector<MpaIndexEntry> entries;
        for (std::size_t at = trnmpa::kIndexHeaderBytes; at < index.size(); at += trnmpa::kIndexEntryBytes)
            entries.push_back(
                trnmpa::ParseIndexEntry(std::span(index).subspan(at).first<trnmpa::kIndexEntryBytes>()));
        ASSERT_EQ(UnexplainedIndex(truth_, Content().size(), entries), "");
        if (!entries.empty())
            CheckWithIndex(entries);
    }

    void CheckWithIndex(const std::vector<MpaIndexEntry>& entries) {
        const ReadingModel reading = ReadingFrom(Content(), entries.front().frameOffset);
        ASSERT_EQ(UnexplainedReading(truth_, reading), "");
        Engine engine(path_);
        ASSERT_EQ(engine.Opened() == trnmpa::kSuccess, reading.opens) << engine.Opened();
        if (!reading.opens)
            return;
        const Pcm expected = Delivered(Joined(reading), 0);
        ASSERT_NO_FATAL_FAILURE(ExpectInOrder(engine, reading, expected));
        CheckJumps(engine, entries, reading, expected);
    }

    /// As far as index and decoder see the same frames, a jump brings what reading in order brought.
    void CheckJumps(Engine& engine, const std::vector<MpaIndexEntry>& entries, const ReadingModel& reading,
                    const Pcm& expected) {
        const auto frames = reading.Delivered();
        std::size_t same = 0;
        while (same < entries.size() && same < frames.size() &&
               entries[same].frameOffset == frames[same].offset)
            ++same;
        const auto values = static_cast<std::size_t>(ValuesPerFrame(reading.format));
        const auto count = static_cast<std::uint32_t>(values / engine.Format().nChannels);
        for (int jump = 0; jump < 4 && same > 0; ++jump, ++counts_.jumps) {
            const auto entry = static_cast<std::size_t>(random_.Below(static_cast<int>(same)));
            const Pcm pcm = engine.Read(static_cast<std::int64_t>(entry) * count, count);
            const auto first = expected.begin() + static_cast<std::ptrdiff_t>(entry * values);
            ASSERT_EQ(pcm, Pcm(first, first + static_cast<std::ptrdiff_t>(values))) << "entry " << entry;
        }
    }

    const Source* sources_[2];
    Counts& counts_;
    bitstream::Random random_;
    DamagedFile file_;
    Truth truth_;
    ScratchFolder folder_;
    std::filesystem::path path_;
};

} // namespace

TEST(Damage, WhatCanBeReachedIsDeliveredAndNothingElse) {
    Counts counts;
    const std::uint64_t seeds = Seeds();
    for (std::size_t i = 0; i < Sources().size(); ++i) {
        for (std::uint64_t seed = 0; seed < seeds; ++seed) {
            const std::size_t other = (i + 1 + seed % (Sources().size() - 1)) % Sources().size();
            DamagedReading reading(Sources()[i], Sources()[other], 1000 * i + seed, counts);
            reading.Check();
            ASSERT_FALSE(testing::Test::HasFailure())
                << Sources()[i].name << ", seed " << seed << ", with " << Sources()[other].name << "\n"
                << reading.Text();
        }
    }
    const int files = static_cast<int>(seeds * Sources().size());
    EXPECT_GT(counts.wholeDelivered, 8 * files);
    EXPECT_GT(counts.settled, 4 * files);
    EXPECT_GT(counts.otherDelivered, files / 4);
    EXPECT_GT(counts.wholeMissing, files / 4);
    EXPECT_GT(counts.jumps, 2 * files);
    EXPECT_GT(counts.refused + counts.withoutIndex, 0);
    EXPECT_LT(counts.refused + counts.withoutIndex, files / 2);
}
