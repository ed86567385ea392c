/// Every call that the module makes of the system fails in turn, on walks over all that it exports.
#include "faults/fault_layer.h"
#include "faults/module_walk.h"
#include "reader/reader_streams.h"
#include "reader/settings_file.h"
#include "trnmpafileread/c_api.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>

namespace {

using namespace test;
namespace fs = std::filesystem;

struct WalkCase {
    std::string name;
    std::function<std::unique_ptr<ModuleWalk>(const fs::path&)> make;
    bool hasIndex = false;
    std::string decoder = "0";
};

std::vector<WalkCase> Cases() {
    std::vector<WalkCase> cases = {{"Builder", WalkBuilder}};
    for (const bool hasIndex : {false, true}) {
        const std::string suffix = hasIndex ? "WithIndex" : "";
        cases.push_back({"Plugin" + suffix, WalkPlugin, hasIndex});
        cases.push_back({"Samples" + suffix, WalkSamples, hasIndex});
        cases.push_back({"Places" + suffix, WalkPlaces, hasIndex});
        cases.push_back({"C" + suffix, WalkC, hasIndex});
        for (const bool converts : {false, true})
            cases.push_back({(converts ? "ConvertedSlices" : "Slices") + suffix,
                             [converts](const fs::path& media) { return WalkSlices(media, converts); },
                             hasIndex});
    }
    if (TRN_HAS_EXTERNAL_DECODER)
        for (const bool hasIndex : {false, true})
            cases.push_back(
                {hasIndex ? "ExternalDecoderWithIndex" : "ExternalDecoder", WalkSamples, hasIndex, "1"});
    return cases;
}

std::string Described(const std::vector<Step>& steps) {
    std::string text;
    for (const Step& step : steps)
        text += step.Text() + "\n";
    return text;
}

bool SameAnswer(const Step& left, const Step& right) {
    return left.name == right.name && left.result == right.result && left.data == right.data && !left.threw &&
           !right.threw;
}

/// The steps that every run takes, whether or not it had to make its objects.
std::vector<Step> OfEveryRun(std::vector<Step> steps) {
    std::erase_if(steps, [](const Step& step) {
        const std::string last = step.name.substr(step.name.rfind(':') + 1);
        return step.name == "GetPluginReadModule" || last == "CreateReaderClass" ||
               step.name == last + "::" + last;
    });
    return steps;
}

/// What a host may be told instead of the sound answer.
bool IsFailure(const Step& step) {
    const std::int32_t result = step.result;
    if (step.name.starts_with("trnmpa_"))
        return result <= TRNMPA_ERROR_MEMORY && result >= TRNMPA_ERROR_UNEXPECTED;
    constexpr std::int32_t kCodes[] = {-128, -2320, -2321, -2322, -2323, -2325, -2329, -2331, -2333, 0};
    return std::ranges::find(kCodes, result) != std::end(kCodes);
}

/// Bit rate and length may be unknown, which the record says.
bool IsWithoutLength(const Step& step) {
    trnmpa_info info = {};
    if (step.name != "trnmpa_reader_info" || step.data.size() != sizeof info)
        return false;
    std::memcpy(&info, step.data.data(), sizeof info);
    return info.bit_rate_kind == TRNMPA_BIT_RATE_UNKNOWN && info.length_kind == TRNMPA_LENGTH_UNKNOWN &&
           info.length == -1 && info.duration == -1;
}

/// What is missing of a read is silence, to its end.
bool IsSilencedCopy(const Bytes& bytes, const Bytes& sound) {
    if (bytes.size() != sound.size())
        return false;
    const auto differs = std::ranges::mismatch(bytes, sound).in1;
    return std::all_of(differs, bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

/// Judges the answers of a run with a fault, one after the other.
class Judge {
public:
    /// `passesGaps`: the decoder goes on where a frame on the way to the wanted one could not be read.
    Judge(const Fault& fault, bool passesGaps) : fault_(fault), passesGaps_(passesGaps) {}

    void Consider(const Step& step, const Step& sound) {
        met_ |= step.metFault;
        // What is opened behind a close meets a lasting fault anew.
        const bool meets = step.metFault || (met_ && closed_ && fault_.length == FaultLength::kLasts);
        metInOpen_ |= meets && (step.kind == StepKind::kOpen || step.kind == StepKind::kIndex);
        EXPECT_FALSE(step.threw);
        if (!SameAnswer(step, sound))
            ConsiderDeviation(step, sound);
        failed_ |= step.result != sound.result;
        if (step.kind == StepKind::kSamples || step.kind == StepKind::kSeek)
            isPast_ |= met_ && !metInOpen_ && fault_.length == FaultLength::kOnce;
        if (step.kind == StepKind::kClose) {
            closed_ = true;
            isPast_ |= met_ && fault_.length == FaultLength::kOnce;
        }
    }

private:
    void ConsiderDeviation(const Step& step, const Step& sound) const {
        EXPECT_TRUE(met_) << "before the fault";
        EXPECT_FALSE(isPast_) << "the fault is over";
        EXPECT_TRUE(step.kind != StepKind::kObject && step.kind != StepKind::kClose);
        const bool isRead = step.kind == StepKind::kSamples || step.kind == StepKind::kSlice;
        if (step.result != sound.result) {
            // What cannot be read is the end of the stream, a constant bit rate that cannot be seen a
            // variable one.
            const std::int32_t other = step.name == "trnmpa_slices_next" ? TRNMPA_END : 2;
            const bool isOtherAnswer = step.result == other && IsAboutFiles();
            EXPECT_TRUE(IsFailure(step) || isOtherAnswer);
            EXPECT_TRUE(!isRead || step.data.size() <= sizeof(std::int32_t)) << "data of a failed read";
        } else if (step.kind == StepKind::kSamples && !(metInOpen_ && IsAboutFiles())) {
            EXPECT_TRUE(IsSilencedCopy(step.data, sound.data) ||
                        (passesGaps_ && fault_.call == SystemCall::kRead && step.metFault &&
                         step.data.size() == sound.data.size()));
        } else if (fault_.call == SystemCall::kAllocate && step.kind == StepKind::kOpen &&
                   !IsWithoutLength(step)) {
            EXPECT_TRUE(failed_) << "a success that is none";
        }
    }

    /// A file that cannot be asked or read is described as what is left of it.
    bool IsAboutFiles() const { return fault_.call != SystemCall::kAllocate; }

    Fault fault_;
    bool passesGaps_;
    bool met_ = false;
    bool metInOpen_ = false;
    bool failed_ = false;
    bool isPast_ = false;
    bool closed_ = false;
};

class Faults : public testing::TestWithParam<WalkCase> {
protected:
    Faults() {
        TakeOverCalls();
        MeetFirstException();
        settings_.SelectDecoder(GetParam().decoder);
    }

    /// One run on the files as they were at first.
    std::vector<Step> Run(ModuleWalk& walk) {
        WriteFile(media_, stream_.bytes);
        fs::remove(index_);
        if (GetParam().hasIndex)
            WriteFile(index_, IndexOf(stream_).ToBytes());
        return walk.Run();
    }

    std::unique_ptr<ModuleWalk> Make() const { return GetParam().make(media_); }

    static bool IsNamed(std::string_view start) {
        return GetParam().name == start || GetParam().name == std::string(start) + "WithIndex";
    }
    static bool BuildsIndexes() { return IsNamed("Builder") || IsNamed("Plugin") || IsNamed("C"); }
    /// Some objects close their files at the end of their lives alone, outside of the walk.
    static bool ClosesFiles() {
        return !IsNamed("Places") && !IsNamed("Slices") && !IsNamed("ConvertedSlices");
    }

    /// A run with the fault, then one without on the same objects.
    void TryFault(const Fault& fault);
    void ExpectHonestIndex() const;
    void ExpectNothingElse(const Fault& fault) const;
    void JudgeAnswers(const std::vector<Step>& faulty, const Fault& fault);
    /// Gives the number of calls of that kind.
    std::size_t TryAll(SystemCall call);

    const SettingsFile settings_;
    const ScratchFolder folder_;
    const bitstream::Stream stream_ = SteadyStream(40);
    const fs::path media_ = folder_.Path() / "song.mp3";
    const fs::path index_ = folder_.Path() / "song.mp3.idx";
    std::vector<Step> sound_;
    int deviations_ = 0; ///< faults that showed in an answer
};

void Faults::TryFault(const Fault& fault) {
    SCOPED_TRACE(std::string(NameOf(fault.call)) + " number " + std::to_string(fault.number) +
                 (fault.length == FaultLength::kLasts ? " and all behind it" : ""));
    const std::unique_ptr<ModuleWalk> walk = Make();
    std::vector<Step> faulty;
    {
        const FaultLayer layer(fault);
        faulty = Run(*walk);
        EXPECT_TRUE(FaultLayer::Happened());
    }
    JudgeAnswers(faulty, fault);
    ExpectHonestIndex();
    ExpectNothingElse(fault);
    const std::vector<Step> again = Run(*walk);
    EXPECT_TRUE(std::ranges::equal(OfEveryRun(again), OfEveryRun(sound_), SameAnswer))
        << "not usable afterwards:\n"
        << Described(again) << "after\n"
        << Described(faulty) << "instead of\n"
        << Described(sound_);
}

/// A header that is not empty says that all entries are there.
void Faults::ExpectHonestIndex() const {
    const Bytes index = fs::exists(index_) ? ReadFile(index_) : Bytes();
    const auto header = std::span(index).first(std::min<std::size_t>(index.size(), 28));
    if (std::ranges::any_of(header, [](std::uint8_t byte) { return byte != 0; })) {
        EXPECT_EQ(index, IndexOf(stream_).ToBytes());
    }
}

/// Without memory to say its name an unfinished index cannot be deleted.
void Faults::ExpectNothingElse(const Fault& fault) const {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_.Path()))
        if (entry.path() != media_ && entry.path() != index_) {
            EXPECT_EQ(fault.call, SystemCall::kAllocate) << entry.path();
            fs::remove(entry.path());
        }
}

void Faults::JudgeAnswers(const std::vector<Step>& faulty, const Fault& fault) {
    Judge judge(fault, GetParam().decoder == "1");
    std::size_t at = 0;
    for (const Step& step : faulty) {
        // After a failed open the walk leaves out what needs it.
        while (at < sound_.size() && sound_[at].name != step.name)
            ++at;
        ASSERT_LT(at, sound_.size()) << Described(faulty);
        judge.Consider(step, sound_[at]);
        if (HasFailure())
            FAIL() << step.Text() << "\nin\n" << Described(faulty) << "instead of\n" << Described(sound_);
        ++at;
    }
    deviations_ += !std::ranges::equal(faulty, sound_, SameAnswer);
}

std::size_t Faults::TryAll(SystemCall call) {
    std::size_t count = 0;
    { SCOPED_TRACE("what the test itself does once"); }
    {
        const std::unique_ptr<ModuleWalk> walk = Make();
        Run(*walk); // what a process does once
    }
    {
        const std::unique_ptr<ModuleWalk> walk = Make();
        const FaultLayer layer;
        sound_ = Run(*walk);
        count = FaultLayer::Count(call);
    }
    for (std::size_t number = 0; number < count && !HasFailure(); ++number)
        for (const FaultLength length : {FaultLength::kOnce, FaultLength::kLasts}) {
            const std::size_t handles = OpenHandles();
            const auto blocks = LiveBlocks();
            TryFault({call, number, length});
            EXPECT_EQ(OpenHandles(), handles) << NameOf(call) << ' ' << number;
            EXPECT_EQ(LiveBlocks(), blocks) << NameOf(call) << ' ' << number;
        }
    RecordProperty(std::string(NameOf(call)), static_cast<int>(count));
    std::printf("%s: %zu calls of kind %s, %d deviations\n", GetParam().name.c_str(), count,
                std::string(NameOf(call)).c_str(), deviations_);
    return count;
}

TEST_P(Faults, Opens) {
    TryAll(SystemCall::kOpen);
    EXPECT_GT(deviations_, 0);
}

TEST_P(Faults, Questions) {
    TryAll(SystemCall::kAsk);
    EXPECT_GT(deviations_, 0);
}

// Indexes are written with them; readers do not need them.
TEST_P(Faults, Seeks) {
    EXPECT_EQ(TryAll(SystemCall::kSeek) > 0, BuildsIndexes());
}

TEST_P(Faults, Reads) {
    TryAll(SystemCall::kRead);
    EXPECT_GT(deviations_, 0);
}

TEST_P(Faults, Writes) {
    EXPECT_EQ(TryAll(SystemCall::kWrite) > 0, BuildsIndexes());
}

TEST_P(Faults, Closes) {
    EXPECT_EQ(TryAll(SystemCall::kClose) > 0, ClosesFiles());
}

TEST_P(Faults, Allocations) {
    TryAll(SystemCall::kAllocate);
    EXPECT_GT(deviations_, 0);
}

INSTANTIATE_TEST_SUITE_P(All, Faults, testing::ValuesIn(Cases()),
                         [](const auto& test) { return test.param.name; });

} // namespace
