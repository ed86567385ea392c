/// Writes the seeds of every target, a folder each, below the folder named: small generated streams of every
/// kind, what stands around streams, indexes, scripts.
#include "harness/input.h"

#include "decoder/feature_streams.h"
#include "reader/reader_streams.h"
#include "support/test_files.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;
using fuzz::Bytes;
using fuzz::InputWriter;

struct Media {
    std::string name;
    Bytes bytes;
    Bytes index;
};

class Seeds {
public:
    explicit Seeds(fs::path folder) : folder_(std::move(folder)) { fs::remove_all(folder_); }

    void Add(const std::string& target, const std::string& name, const Bytes& bytes) {
        fs::create_directories(folder_ / target);
        test::WriteFile(folder_ / target / name, bytes);
        ++count_;
    }
    std::size_t Count() const { return count_; }

private:
    fs::path folder_;
    std::size_t count_ = 0;
};

Bytes BytesOf(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

Bytes Tag(std::uint8_t sizeByte, std::size_t padding) {
    Bytes tag = {'I', 'D', '3', 3, 0, 0, 0, 0, 0, sizeByte};
    tag.resize(tag.size() + sizeByte + padding);
    return tag;
}

/// A few frames of every feature, at the lowest bit rate that holds it.
std::vector<Media> FeatureStreams() {
    std::vector<Media> streams;
    for (const auto& list : {test::Layer3FeatureStreams(), test::Layer2FeatureStreams()})
        for (test::FeatureStream stream : list) {
            stream.options.frames = 4;
            const auto written = test::bitstream::WriteStream(stream.options);
            streams.push_back({stream.name, written.bytes, test::IndexOf(written).ToBytes()});
        }
    return streams;
}

/// Streams as files have them: tags, describing frames, junk, changes of format, cut ends.
std::vector<Media> Files() {
    const auto steady = test::SteadyStream(5);
    const auto changing = test::ChangingStream(6);
    const auto layer2 = test::Layer2Stream(4);
    const Bytes index = test::IndexOf(steady).ToBytes();
    std::vector<Media> files = {
        {"steady", steady.bytes, index},
        {"changing", changing.bytes, test::IndexOf(changing).ToBytes()},
        {"layer2", layer2.bytes, test::IndexOf(layer2).ToBytes()},
        {"info", test::Joined({test::DescribingFrame(steady, "Info"), steady.bytes}), index},
        {"xing", test::Joined({test::DescribingFrame(steady, "Xing"), steady.bytes}), index},
        {"tag", test::Joined({Tag(40, 6), steady.bytes}), test::IndexOf(steady, 56).ToBytes()},
        {"two-tags", test::Joined({Tag(20, 0), Tag(9, 0), layer2.bytes}), index},
        {"junk", test::Joined({Bytes(300, 0xFF), steady.bytes, Bytes(100, 0x55), steady.bytes}), index},
        {"formats", test::Joined({steady.bytes, layer2.bytes, changing.bytes}), index},
        {"empty", {}, {}},
    };
    Bytes cut = steady.bytes;
    cut.resize(cut.size() - 200);
    files.push_back({"cut", cut, Bytes(index.begin(), index.end() - 5)});
    return files;
}

/// A stream beside indexes whose numbers are the smallest and largest that fit.
std::vector<Media> FilesWithOddIndexes() {
    using Header = trnmpa::MpaIndexHeader;
    constexpr std::uint32_t kLargest = 0xFFFFFFFF;
    const auto stream = test::SteadyStream(5);
    const test::Index sound = test::IndexOf(stream);
    std::vector<Media> files;
    const auto add = [&](const std::string& name, const Header& header,
                         const std::vector<trnmpa::MpaIndexEntry>& entries) {
        files.push_back({name, stream.bytes, test::Index{header, entries}.ToBytes()});
    };
    const auto change = [&](const std::string& name, auto field, auto value) {
        Header header = sound.header;
        header.*field = value;
        add(name, header, sound.entries);
    };
    for (const auto value : std::initializer_list<std::uint16_t>{0x0000, 0x7FFF, 0x8000, 0xFFFF}) {
        const std::string suffix = "-" + std::to_string(value);
        change("channels" + suffix, &Header::channels, value);
        change("bits" + suffix, &Header::bitsPerSample, value);
        change("frame-bytes" + suffix, &Header::frameBytes, value);
        Header header = sound.header;
        header.channels = header.bitsPerSample = value;
        add("channels-and-bits" + suffix, header, sound.entries);
    }
    for (const std::uint32_t value : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, kLargest}) {
        const std::string suffix = "-" + std::to_string(value);
        change("frame-count" + suffix, &Header::frameCount, value);
        change("bit-rate" + suffix, &Header::bitRate, value);
        change("sample-rate" + suffix, &Header::sampleRate, value);
        change("samples" + suffix, &Header::samplesPerFrame, value);
        auto entries = sound.entries;
        entries.back() = {value, value};
        add("last-entry" + suffix, sound.header, entries);
    }
    for (const auto value : std::initializer_list<std::uint8_t>{0, 4, 255}) {
        change("layer-" + std::to_string(value), &Header::layer, value);
        change("version-" + std::to_string(value), &Header::version, value);
    }
    add("all-largest", {kLargest, kLargest, 255, 255, 0xFFFF, kLargest, kLargest, 0xFFFF, 0xFFFF, kLargest},
        sound.entries);
    add("all-zero", {}, {});
    return files;
}

/// Reads in order and after jumps, with everything that opens and closes between.
Bytes SampleOperations() {
    InputWriter script;
    for (const auto operation : std::initializer_list<std::uint8_t>{6, 6, 10, 3, 5, 1, 2, 0, 4, 12})
        script.U8(operation).U8(40).U8(30);
    return script.Done();
}

/// Formats and durations, jumps, places, opens.
Bytes SliceOperations() {
    InputWriter script;
    script.U8(12).U8(8).U8(3).U8(4).U8(0x11).U8(1).U8(3).U8(12).U8(4).U8(0x12).U8(2).U8(5);
    script.U8(8).U8(2).U8(3).U8(20).U8(12).U8(5).U8(9).U8(6).I64(1'000'000).U8(7).U32(70'000);
    script.U8(2).U8(15).U8(0).U8(15);
    return script.Done();
}

Bytes PluginOperations(std::uint8_t flags) {
    InputWriter script;
    script.U8(0).U8(2).U8(1).U8(flags).U8(0).U8(4).U8(20).U8(10).U8(8).U8(10).U8(1).U8(14).U8(1);
    script.U8(2).U8(6).U8(1).U8(5).U8(0).U8(30).U8(9).U8(11).U32(0x33504D2E).U8(12).U8(0).U8(1).U8(7).U8(0);
    return script.Done();
}

Bytes COperations() {
    InputWriter script;
    script.U8(0).U8(0).U8(2).U8(0).U8(9).U8(0).U8(30).U8(0).U8(0).U8(9).U8(5).U8(40).U8(0).U8(0);
    script.U8(1).U8(0).U8(3).U8(2).U8(0).U8(0).U8(5).U8(0).U8(0).U8(6).U8(1).U32(3).U8(0);
    script.U8(3).U8(3).U8(0).U8(0).U8(1).U8(8).U8(10).U8(20).U8(0).U8(0).U8(4).U8(3).U8(65).U8(0xC3).U8(0xA9);
    script.U8(3).U8(1).U8(0).U8(2).U8(3).U8(0).U8(1).U8(9).U8(0).U8(200).U8(0xF1).U8(0);
    return script.Done();
}

Bytes DecoderOperations() {
    InputWriter script;
    script.U8(0).U8(2).U8(0).U8(4).U8(0).U8(2).U8(5).U8(6).U16(100).U8(0).U8(2).U8(7).U8(1).U8(2).U8(7).U8(0);
    return script.Done();
}

void AddStream(Seeds& seeds, const Media& media) {
    seeds.Add("decoder_fuzz", media.name, InputWriter().Part({}).Append(media.bytes).Done());
}

void AddMedia(Seeds& seeds, const Media& media) {
    const std::string& name = media.name;
    seeds.Add("frame_header_fuzz", name, media.bytes);
    seeds.Add("index_builder_fuzz", name, InputWriter().U8(0).Append(media.bytes).Done());
    seeds.Add("sample_reader_fuzz", name,
              InputWriter().U8(0).Part(SampleOperations()).Append(media.bytes).Done());
    seeds.Add("slice_reader_fuzz", name,
              InputWriter().U8(0).Part(SliceOperations()).Append(media.bytes).Done());
    seeds.Add("c_api_fuzz", name, InputWriter().U8(0).Part(COperations()).Append(media.bytes).Done());
}

/// With the index beside it.
void AddReads(Seeds& seeds, const Media& media) {
    const std::string name = media.name + "-more";
    seeds.Add("sample_reader_fuzz", name,
              InputWriter().U8(3).Part(SampleOperations()).Part(media.index).Append(media.bytes).Done());
    seeds.Add("slice_reader_fuzz", name,
              InputWriter().U8(1).Part(SliceOperations()).Part(media.index).Append(media.bytes).Done());
    seeds.Add("c_api_fuzz", name,
              InputWriter().U8(1).Part(COperations()).Part(media.index).Append(media.bytes).Done());
}

void AddFile(Seeds& seeds, const Media& media) {
    const std::string name = media.name + "-more";
    seeds.Add("decoder_fuzz", name, InputWriter().Part(DecoderOperations()).Append(media.bytes).Done());
    seeds.Add("index_builder_fuzz", name, InputWriter().U8(3).Append(media.bytes).Done());
    seeds.Add("sample_reader_fuzz", media.name + "-external",
              InputWriter().U8(4).Part(SampleOperations()).Append(media.bytes).Done());
    AddReads(seeds, media);
    for (const auto choice : std::initializer_list<std::uint8_t>{0, 1, 2})
        seeds.Add("index_file_fuzz", media.name + std::to_string(choice),
                  InputWriter().U8(choice).Append(Bytes(16)).Append(media.index).Done());
    for (const auto flags : std::initializer_list<std::uint8_t>{1, 2, 4, 7, 15})
        seeds.Add("plugin_fuzz", media.name + std::to_string(flags),
                  InputWriter().Part(PluginOperations(flags)).Part(media.bytes).Append(media.bytes).Done());
}

void AddOddIndex(Seeds& seeds, const Media& media) {
    AddReads(seeds, media);
    seeds.Add("index_file_fuzz", media.name,
              InputWriter().U8(0).Append(Bytes(16)).Append(media.index).Done());
    InputWriter script;
    for (const auto flags : std::initializer_list<std::uint8_t>{1, 2, 4, 7, 15}) {
        // Put there each time, as an index that is built takes its place.
        script.U8(0).U8(2).U8(13).U8(0).U8(static_cast<std::uint8_t>(media.index.size())).Append(media.index);
        script.Append(PluginOperations(flags));
    }
    seeds.Add("plugin_fuzz", media.name,
              InputWriter().Part(script.Done()).Part(media.bytes).Append(media.bytes).Done());
}

void AddSettings(Seeds& seeds) {
    const std::string whole = "[FILERW]\r\nReadBufSize=64\r\n[CODEC]\r\nMP3DecoderUse=0\r\n[READSIZE]\r\n"
                              "ReadMp3BufSize=128\r\n";
    seeds.Add("settings_fuzz", "whole", BytesOf(whole));
    seeds.Add("settings_fuzz", "utf8", BytesOf("\xEF\xBB\xBF" + whole));
    std::string wide = "\xFF\xFE";
    for (const char character : whole)
        wide += {character, '\0'};
    seeds.Add("settings_fuzz", "utf16", BytesOf(wide));
    int number = 0;
    for (const char* value :
         {"1", "2", "-1", "0x7fffffff", "4294967295", "\"1\"", "99999999999999999999", ";1"})
        seeds.Add("settings_fuzz", "value" + std::to_string(number++),
                  BytesOf(std::string("[CODEC]\nMP3DecoderUse=") + value +
                          "\n[READSIZE]\nReadMp3BufSize=" + value + "\n[FILERW]\nReadBufSize=" + value));
    seeds.Add("settings_fuzz", "comments",
              BytesOf("; text\n[ codec ] ; behind\n mp3decoderuse = 1 ; one\n[\n=\n"));
    seeds.Add("settings_fuzz", "empty", {});
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: fuzz_seeds FOLDER\n");
        return 2;
    }
    Seeds seeds(argv[1]);
    // What the decoder tells apart is much the same for who reads through it.
    const std::vector<Media> streams = FeatureStreams();
    for (std::size_t i = 0; i < streams.size(); ++i) {
        AddStream(seeds, streams[i]);
        if (i % 8 == 0)
            AddMedia(seeds, streams[i]);
    }
    for (const Media& media : Files()) {
        AddStream(seeds, media);
        AddMedia(seeds, media);
        AddFile(seeds, media);
    }
    for (const Media& media : FilesWithOddIndexes())
        AddOddIndex(seeds, media);
    AddSettings(seeds);
    std::printf("%zu seeds\n", seeds.Count());
    return 0;
}
