/// What `mpatool info` tells of the claims that a file makes: the encoder's frame and tags.

#include "tools/tool_fixture.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;
using test::Bytes;
using test::ProcessResult;
using testing::HasSubstr;
using testing::Not;

constexpr std::size_t kFieldsPlace = 36; ///< in a stereo MPEG-1 frame

Bytes& operator+=(Bytes& bytes, const std::string& text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
    return bytes;
}

std::string Big(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i)
        text += static_cast<char>(value >> (8 * i));
    return text;
}

/// LAME's: 9 characters, then the delays 12 bytes on.
std::string LameFields(const std::string& encoder, std::uint64_t delays) {
    return encoder + std::string(9 - encoder.size(), '\0') + std::string(12, '\0') + Big(delays, 3);
}

class ClaimsTest : public test::ToolTest {
protected:
    Json Claimed(const Bytes& file) const {
        AddPlanned("a.mp3", file, {});
        const ProcessResult result = RunCounting({"info", "--json", "a.mp3"});
        EXPECT_EQ(result.exitStatus, 0) << result.error;
        return Json::parse(result.output).at("files").at(0).at("claimed");
    }

    /// Of a stream of silence whose first frame has `fields` in it.
    Json EncoderFrame(const std::string& fields, std::size_t place = kFieldsPlace) const {
        Bytes stream = test::SilentLayer3(10);
        std::ranges::copy(fields, stream.begin() + static_cast<std::ptrdiff_t>(place));
        return Claimed(stream).at("encoderFrame");
    }
};

TEST_F(ClaimsTest, AllFieldsOfAnInfoFrame) {
    const std::string fields = "Info" + Big(15, 4) + Big(9, 4) + Big(4170, 4) + std::string(100, 'x') +
                               Big(57, 4) + LameFields("LAME3.100", 576 << 12 | 1105);
    EXPECT_EQ(EncoderFrame(fields), (Json{{"name", "Info"},
                                          {"offset", 0},
                                          {"frames", 9},
                                          {"bytes", 4170},
                                          {"quality", 57},
                                          {"tableOfContents", true},
                                          {"encoder", "LAME3.100"},
                                          {"delaySamples", 576},
                                          {"paddingSamples", 1105},
                                          {"soundSamples", 9 * 1152 - 576 - 1105}}));
    EXPECT_THAT(RunCounting({"info", "a.mp3"}).output,
                HasSubstr("  claimed by the file\n"
                          "    encoder's frame   \"Info\" at byte 0\n"
                          "    frames            9\n"
                          "    bytes             4170\n"
                          "    quality           57\n"
                          "    table of contents yes\n"
                          "    encoder           LAME3.100\n"
                          "    encoder delay     576 samples\n"
                          "    encoder padding   1105 samples\n"
                          "    sound             0:00.197 (8687 samples)\n"
                          "    tags              none\n"
                          "  counted\n"));
}

TEST_F(ClaimsTest, FlagsTellWhichFieldsThereAre) {
    EXPECT_EQ(EncoderFrame("Xing" + Big(2, 4) + Big(4170, 4)), (Json{{"name", "Xing"},
                                                                     {"offset", 0},
                                                                     {"frames", nullptr},
                                                                     {"bytes", 4170},
                                                                     {"quality", nullptr},
                                                                     {"tableOfContents", false},
                                                                     {"encoder", nullptr},
                                                                     {"delaySamples", nullptr},
                                                                     {"paddingSamples", nullptr},
                                                                     {"soundSamples", nullptr}}));
}

TEST_F(ClaimsTest, Vbri) {
    const std::string fields =
        "VBRI" + Big(1, 2) + Big(1105, 2) + Big(75, 2) + Big(4170, 4) + Big(9, 4) + Big(3, 2);
    const Json frame = EncoderFrame(fields);
    EXPECT_EQ(frame.at("name"), "VBRI");
    EXPECT_EQ(frame.at("delaySamples"), 1105);
    EXPECT_EQ(frame.at("quality"), 75);
    EXPECT_EQ(frame.at("bytes"), 4170);
    EXPECT_EQ(frame.at("frames"), 9);
    EXPECT_EQ(frame.at("tableOfContents"), true);
    EXPECT_EQ(frame.at("paddingSamples"), nullptr);
}

TEST_F(ClaimsTest, NoEncoderFrame) {
    EXPECT_EQ(EncoderFrame("info"), nullptr);
    EXPECT_EQ(EncoderFrame("Info", kFieldsPlace + 1), nullptr);
    EXPECT_THAT(RunCounting({"info", "a.mp3"}).output, HasSubstr("    encoder's frame   none\n"));
}

TEST_F(ClaimsTest, ExtremeNumbersAndForeignCharacters) {
    const std::string most = "Info" + std::string(1, '\x7F') + std::string(3, '\xFF') +
                             std::string(4 + 4 + 100 + 4, '\xFF') + LameFields("L\x1B[2J\xFFxyz", 0xFFFFFF);
    const Json frame = EncoderFrame(most);
    EXPECT_EQ(frame.at("frames"), 0xFFFFFFFF);
    EXPECT_EQ(frame.at("bytes"), 0xFFFFFFFF);
    EXPECT_EQ(frame.at("encoder"), "L");
    EXPECT_EQ(frame.at("delaySamples"), 4095);
    EXPECT_EQ(frame.at("soundSamples"), std::int64_t{0xFFFFFFFF} * 1152 - 2 * 4095);
    EXPECT_THAT(RunCounting({"info", "a.mp3"}).output, Not(HasSubstr("\x1B")));
    EXPECT_EQ(EncoderFrame("Info" + Big(1, 4) + Big(0, 4) + LameFields("LAME", 0xFFFFFF)).at("soundSamples"),
              0);
}

TEST_F(ClaimsTest, FieldsThatTheFrameHasNoRoomFor) {
    // 96 bytes, of which the fields up to the table take 17 less than they would.
    Bytes stream = test::FramesOf({0xFF, 0xFB, 0x14, 0xC0}, 96, 10);
    const std::string fields =
        "Info" + Big(15, 4) + Big(9, 4) + Big(960, 4) + std::string(100, 'x') + Big(57, 4);
    std::ranges::copy(fields.substr(0, 96 - 21), stream.begin() + 21);
    const Json frame = Claimed(stream).at("encoderFrame");
    EXPECT_EQ(frame.at("bytes"), 960);
    EXPECT_EQ(frame.at("tableOfContents"), false);
    EXPECT_EQ(frame.at("quality"), nullptr);
    EXPECT_EQ(frame.at("encoder"), nullptr);
}

TEST_F(ClaimsTest, TagsByPlaceAndSize) {
    Bytes file;
    file += std::string("ID3\4\0\0\0\0\0\x0A", 10) + std::string(10, '\0');
    const Bytes sound = test::SilentLayer3(10);
    file.insert(file.end(), sound.begin(), sound.end());
    file += "LYRICSBEGIN" + std::string(9, 'a') + "LYRICSEND";
    file += std::string("APETAGEX\xE8\3\0\0\x20\0\0\0", 16) + std::string(16, '\0');
    file += std::string("APETAGEX\xD0\7\0\0\x20\0\0\0", 16) + std::string(16, '\0');
    file += "LYRICSBEGINabc000014LYRICS200";
    file += "TAG" + std::string(125, '\0');
    EXPECT_EQ(Claimed(file).at("tags"),
              (Json::array({{{"name", "ID3v2.4"}, {"offset", 0}, {"bytes", 20}},
                            {{"name", "Lyrics3v1"}, {"offset", 4190}, {"bytes", 29}},
                            {{"name", "APEv1"}, {"offset", 4219}, {"bytes", 32}},
                            {{"name", "APEv2"}, {"offset", 4251}, {"bytes", 32}},
                            {{"name", "Lyrics3v2"}, {"offset", 4283}, {"bytes", 29}},
                            {{"name", "ID3v1"}, {"offset", 4312}, {"bytes", 128}}})));
    EXPECT_THAT(RunCounting({"info", "a.mp3"}).output,
                HasSubstr("    tag               ID3v2.4 at byte 0, 20 bytes\n"
                          "    tag               Lyrics3v1 at byte 4190, 29 bytes\n"));
}

TEST_F(ClaimsTest, TagsThatClaimMoreThanTheFileHas) {
    Bytes file = test::SilentLayer3(10);
    file += std::string("APETAGEX\xD0\7\0\0\xFF\xFF\xFF\xFF", 16) + std::string(16, '\0');
    EXPECT_EQ(Claimed(file).at("tags"), Json::array());
}

} // namespace
