/// `mpatool check`, run as users run it.

#include "tools/tool_fixture.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

namespace {

using Json = nlohmann::json;
using test::Bytes;
using test::ProcessResult;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr int kDamaged = 3;
constexpr std::ptrdiff_t kFrame = test::kSilentFrameBytes;

Bytes Joined(std::initializer_list<Bytes> parts) {
    Bytes bytes;
    for (const Bytes& part : parts)
        bytes.insert(bytes.end(), part.begin(), part.end());
    return bytes;
}

Bytes Text(const std::string& text, std::size_t size) {
    Bytes bytes(text.begin(), text.end());
    bytes.resize(size);
    return bytes;
}

class CheckTest : public test::ToolTest {
protected:
    /// What is printed about a file, below its name; nothing is written.
    std::string Check(const Bytes& file, int exitStatus) const {
        Add("a.mp3", file);
        return CheckAdded(exitStatus);
    }

    std::string CheckAdded(int exitStatus) const {
        const ProcessResult result = Run({"check", "a.mp3"});
        EXPECT_EQ(result.exitStatus, exitStatus);
        EXPECT_THAT(result.error, IsEmpty());
        EXPECT_THAT(NewFiles(), IsEmpty());
        EXPECT_THAT(result.output, StartsWith("a.mp3: "));
        return result.output.substr(std::min<std::size_t>(7, result.output.size()));
    }

    const Bytes clean_ = test::SilentLayer3(20);
};

TEST_F(CheckTest, CleanFile) {
    EXPECT_EQ(Check(clean_, 0), "no damage (20 frames, 0:00.498)\n");
}

TEST_F(CheckTest, Junk) {
    Bytes file = clean_;
    file.insert(file.begin() + 5 * kFrame, 100, 0);
    EXPECT_EQ(Check(file, kDamaged), "damaged: 1 stretch of junk (20 frames, 0:00.498)\n"
                                     "  byte 2,085   0:00.106  junk: 100 bytes\n");
    file.insert(file.begin() + 4 * kFrame, 1, 0);
    EXPECT_EQ(Check(file, kDamaged),
              "damaged: 1 stretch of junk (20 frames, 0:00.498)\n"
              "  byte 1,668   0:00.080  junk: 101 bytes in 2 places, up to byte 2,186\n");
    EXPECT_THAT(Check(Joined({Bytes(3), clean_, Bytes(2)}), kDamaged),
                HasSubstr("  byte     0   0:00.000  junk: 3 bytes\n"
                          "  byte 8,343   0:00.498  junk: 2 bytes\n"));
}

TEST_F(CheckTest, MuchJunkEndsAnIndex) {
    Bytes file = clean_;
    file.insert(file.begin() + 5 * kFrame, 5000, 0);
    EXPECT_EQ(Check(file, kDamaged),
              "damaged: 1 stretch of junk, 1 loss of sync (20 frames, 0:00.498)\n"
              "  byte  2,085   0:00.106  junk: 5,000 bytes\n"
              "  byte  2,085   0:00.106  lost sync: no frame header in 4,096 bytes; an index ends here\n"
              "  byte  7,085   0:00.106  positions: from here on jumps through an index may miss; it lists "
              "0 frames that reading in order does not bring, and lacks 15\n");
}

TEST_F(CheckTest, JunkInFrontThatTheModuleDoesNotPass) {
    EXPECT_EQ(Check(Joined({Bytes(5000), clean_}), kDamaged),
              "damaged: 1 stretch of junk, 1 place that cannot be read (20 frames, 0:00.498)\n"
              "  byte      0   0:00.000  junk: 5,000 bytes\n"
              "  byte      0   0:00.000  positions: no index can be built of this file\n"
              "  byte  5,000   0:00.000  unreadable: the module does not find the first frame, which begins "
              "here\n");
}

TEST_F(CheckTest, AFrameThatIsCutShortHidesTheNextOne) {
    Bytes file = clean_;
    file.erase(file.begin() + 5 * kFrame + 200, file.begin() + 5 * kFrame + 300);
    EXPECT_EQ(Check(file, kDamaged),
              "damaged: 1 loss of sync (19 frames, 0:00.471)\n"
              "  byte 2,085   0:00.106  lost sync: a frame is cut short, 317 of its 417 "
              "bytes are there; it hides 1 frame\n");
}

TEST_F(CheckTest, CrcFailures) {
    const std::string text = Check(test::FramesOf({0xFF, 0xFA, 0x90, 0x00}, 417, 20), kDamaged);
    EXPECT_EQ(text, "damaged: 1 CRC failure (20 frames, 0:00.498)\n"
                    "  byte     0   0:00.000  CRC failure in 20 frames, up to byte 8,340\n");
    EXPECT_THAT(Check(test::FramesOf({0xFF, 0xFC, 0x80, 0x00}, 417, 20), kDamaged),
                HasSubstr("CRC failure in 20 frames"));
}

TEST_F(CheckTest, MainDataThatAreNotThere) {
    Bytes file = clean_;
    file[0 + 4] = 0x05; // main_data_begin 10 in the first frame
    EXPECT_EQ(Check(file, kDamaged),
              "damaged: 1 reservoir underrun (20 frames, 0:00.498)\n"
              "  byte     0   0:00.000  reservoir underrun: the frame lacks 10 bytes of "
              "main data from before it\n");
    file = clean_;
    file[3 * kFrame + 6] = 0x0F; // part2_3_length 4032 bits of 381 bytes
    file[3 * kFrame + 7] = 0xC0;
    EXPECT_EQ(Check(file, kDamaged),
              "damaged: 1 reservoir overrun (20 frames, 0:00.498)\n"
              "  byte 1,251   0:00.053  reservoir overrun: the frame's main data would "
              "end 123 bytes behind it\n");
}

TEST_F(CheckTest, FormatChange) {
    const Bytes other = test::FramesOf({0xFF, 0xFB, 0x94, 0xC0}, 384, 5);
    const std::string text = Check(Joined({clean_, other, clean_}), kDamaged);
    EXPECT_THAT(text, StartsWith("damaged: 1 format change (40 frames, "));
    EXPECT_THAT(text,
                HasSubstr("  byte  8,340   0:00.498  format change: 5 frames of MPEG-1 layer III, 48000 Hz, "
                          "mono, not delivered\n"));
}

TEST_F(CheckTest, Truncation) {
    EXPECT_EQ(Check(Bytes(clean_.begin(), clean_.end() - 17), kDamaged),
              "damaged: 1 truncation (19 frames, 0:00.471)\n"
              "  byte 7,923   0:00.471  truncation: the last frame has 400 of 417 bytes\n");
    EXPECT_THAT(Check(Bytes(clean_.begin(), clean_.end() - 416), kDamaged),
                HasSubstr("truncation: the last frame has 1 byte\n"));
}

TEST_F(CheckTest, LessSoundThanTheEncoderWrote) {
    Bytes file = clean_;
    std::ranges::copy(Text(std::string("Info\0\0\0\3\0\0\0\x14\0\0\x20\x94", 16), 16), file.begin() + 36);
    EXPECT_EQ(Check(file, 0), "no damage (19 frames, 0:00.471)\n");
    file.resize(10 * kFrame);
    EXPECT_EQ(Check(file, kDamaged), "damaged: 1 truncation (9 frames, 0:00.210)\n"
                                     "  byte 4,170   0:00.210  truncation: the encoder wrote 8,340 bytes of "
                                     "sound, 4,170 are there\n");
}

TEST_F(CheckTest, TagsAreNoDamage) {
    const Bytes id3v2 = Text(std::string("ID3\3\0\0\0\0\0\x0A", 10), 20);
    const Bytes ape = Text(std::string("APETAGEX\xD0\7\0\0\x20\0\0\0", 16), 32);
    const Bytes lyrics = Text("LYRICSBEGIN00000LYRICSEND", 25);
    const Bytes lyrics2 = Text("LYRICSBEGINabc000014LYRICS200", 29);
    const Bytes id3v1 = Text("TAG", 128);
    EXPECT_EQ(Check(Joined({id3v2, clean_, ape, lyrics2, id3v1}), 0),
              "no damage (20 frames, 0:00.498)\n"
              "  byte     0   0:00.000  ID3v2.3 tag, 20 bytes\n"
              "  byte 8,360   0:00.498  APEv2 tag, 32 bytes\n"
              "  byte 8,392   0:00.498  Lyrics3v2 tag, 29 bytes\n"
              "  byte 8,421   0:00.498  ID3v1 tag, 128 bytes\n");
    EXPECT_THAT(Check(Joined({clean_, lyrics, id3v1}), 0),
                HasSubstr("byte 8,340   0:00.498  Lyrics3v1 tag, 25 b"));
    const Bytes cut(clean_.begin(), clean_.end() - 100);
    EXPECT_THAT(Check(Joined({cut, id3v1}), kDamaged),
                HasSubstr("truncation: the last frame has 317 of 417 bytes\n"))
        << "the decoder takes the tag for the rest";
}

TEST_F(CheckTest, ATagBetweenFramesIsJunk) {
    const std::string text = Check(Joined({clean_, Text("TAG", 128), clean_}), kDamaged);
    EXPECT_THAT(text, HasSubstr("junk: 128 bytes, which begin like an ID3v1 tag\n"));
}

TEST_F(CheckTest, TheIndexBesideAFileIsComparedAndLeftAlone) {
    Add("a.mp3", clean_);
    Add("a.mp3.idx", test::IndexOfSilence(20));
    EXPECT_EQ(CheckAdded(0), "no damage (20 frames, 0:00.498)\n");
    Add("a.mp3.idx", test::IndexOfSilence(19));
    EXPECT_EQ(CheckAdded(kDamaged), "damaged: 1 stale index (20 frames, 0:00.498)\n"
                                    "  byte     0   0:00.000  stale index: the file's size is 7,923 in the "
                                    "index, 8,340 in the file\n");
    EXPECT_EQ(Read("a.mp3.idx"), test::IndexOfSilence(19));
}

TEST_F(CheckTest, StreamsThatNeedAnIndexAreNoDamage) {
    Add("a.mp3", test::FramesOf({0xFF, 0xF5, 0x84, 0x00}, 384, 20));
    EXPECT_EQ(CheckAdded(0),
              "no damage (20 frames, 0:00.960)\n"
              "  byte     0   0:00.000  positions: Layer II at such a sampling frequency is read "
              "right with an index only\n");
}

TEST_F(CheckTest, WorstStatusOfSeveralFiles) {
    Add("a.mp3", clean_);
    Add("b.mp3", Joined({clean_, Bytes(1)}));
    EXPECT_EQ(Run({"check", "a.mp3", "a.mp3"}).exitStatus, 0);
    EXPECT_EQ(Run({"check", "a.mp3", "b.mp3", "a.mp3"}).exitStatus, kDamaged);
    const ProcessResult result = Run({"check", "b.mp3", "none.mp3", "a.mp3"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "b.mp3: damaged: 1 stretch of junk (20 frames, 0:00.498)\n"
                             "  byte 8,340   0:00.498  junk: 1 byte\n"
                             "a.mp3: no damage (20 frames, 0:00.498)\n");
    EXPECT_THAT(result.error, StartsWith("mpatool: none.mp3: "));
}

TEST_F(CheckTest, WhatIsNoMpegAudio) {
    Add("text.mp3", Text("no sound", 3000));
    Add("empty.mp3", {});
    Add("header.mp3", Joined({Bytes(1000, 1), Bytes(clean_.begin(), clean_.begin() + 417), Bytes(1000, 1)}));
    AddFolder("folder");
    for (const char* file : {"text.mp3", "empty.mp3", "header.mp3"}) {
        const ProcessResult result = Run({"check", file});
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_THAT(result.output, IsEmpty());
        EXPECT_EQ(result.error, std::string("mpatool: ") + file + ": no MPEG audio frames found\n");
    }
    const ProcessResult result = Run({"check", "folder"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.error, StartsWith("mpatool: folder: "));
    EXPECT_EQ(Run({"check"}).exitStatus, 2);
}

TEST_F(CheckTest, JsonForm) {
    Bytes file = clean_;
    file.insert(file.begin() + 5 * kFrame, 100, 0);
    Add("ü.mp3", Joined({file, Text("TAG", 128)}));
    const ProcessResult result = Run({"check", "--json", "ü.mp3", "none.mp3"});
    EXPECT_EQ(result.exitStatus, 1);
    const Json files = Json::parse(result.output).at("files");
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files.at(1).at("file"), "none.mp3");
    EXPECT_THAT(files.at(1).at("error").get<std::string>(), StartsWith("none.mp3: "));
    Json object = files.at(0);
    const Json findings = object.at("findings");
    object.erase("findings");
    EXPECT_NEAR(object.at("seconds").get<double>(), 0.4975, 0.0001);
    object.erase("seconds");
    EXPECT_EQ(object, (Json{{"file", "ü.mp3"},
                            {"bytes", 8568},
                            {"damaged", true},
                            {"stream", "MPEG-1 layer III, 44100 Hz, stereo"},
                            {"index", false},
                            {"frames", 20},
                            {"counts", {{"junk", 1}, {"trailing-tag", 1}}},
                            {"unlisted", 0}}));
    ASSERT_EQ(findings.size(), 2u);
    EXPECT_NEAR(findings.at(0).at("seconds").get<double>(), 4660 / 44100.0, 1e-9);
    Json junk = findings.at(0);
    junk.erase("seconds");
    EXPECT_EQ(junk, (Json{{"kind", "junk"},
                          {"damage", true},
                          {"offset", 2085},
                          {"end", 2185},
                          {"bytes", 100},
                          {"frames", 0},
                          {"places", 1},
                          {"text", "junk: 100 bytes"}}));
    EXPECT_EQ(findings.at(1).at("kind"), "trailing-tag");
    EXPECT_EQ(findings.at(1).at("damage"), false);
    EXPECT_EQ(findings.at(1).at("offset"), 8440);
}

// One search passes over all the zeros.
TEST_F(CheckTest, AnInterruptEndsALongSearch) {
    Add("a.mp3", clean_);
    std::filesystem::resize_file(InFolder("a.mp3"), std::uintmax_t{1} << 32);
    test::RunningProcess process(test::ToolPath(), {"check", "a.mp3"}, Folder());
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const auto asked = std::chrono::steady_clock::now();
    if (!process.Interrupt())
        GTEST_SKIP() << "no console to send the interrupt through";
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.exitStatus, 130);
    EXPECT_THAT(result.output, IsEmpty());
    EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::seconds(5));
}

TEST_F(CheckTest, HelpTellsTheStatusOfDamage) {
    const ProcessResult result = Run({"check", "--help"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_THAT(result.output, HasSubstr("  3    check has found damage"));
    EXPECT_THAT(result.output, HasSubstr("  reservoir underrun  "));
    EXPECT_THAT(Run({"--help"}).output, HasSubstr("check"));
}

} // namespace
