#include "tools/tool_fixture.h"

#include "mpatool/pcm/wave_writer.h"
#include "tools/counted_sample.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace test {

namespace fs = std::filesystem;

namespace {

fs::path PathFromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr)
        throw std::runtime_error(std::string(name) + " is not set; run the tests through ctest");
    return value;
}

void AppendNumber(Bytes& bytes, std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

std::u8string Utf8(const std::string& text) {
    return std::u8string(text.begin(), text.end());
}

std::string FileName(const fs::path& path) {
    const std::u8string name = path.filename().u8string();
    return std::string(name.begin(), name.end());
}

} // namespace

fs::path ToolPath() {
    return PathFromEnvironment("TRN_MPATOOL");
}

fs::path CountingModulePath() {
    return PathFromEnvironment("TRN_COUNTING_MODULE");
}

Bytes SilentLayer3(std::size_t frames) {
    return FramesOf({0xFF, 0xFB, 0x90, 0x00}, kSilentFrameBytes, frames);
}

Bytes FramesOf(std::array<std::uint8_t, 4> header, std::size_t frameBytes, std::size_t frames) {
    Bytes stream(frames * frameBytes);
    for (std::size_t i = 0; i < frames; ++i)
        std::ranges::copy(header, stream.begin() + static_cast<std::ptrdiff_t>(i * frameBytes));
    return stream;
}

Bytes IndexOfSilence(std::size_t frames) {
    std::vector<std::uint32_t> offsets;
    for (std::size_t i = 1; i < frames; ++i)
        offsets.push_back(static_cast<std::uint32_t>(i * kSilentFrameBytes));
    return IndexOf(offsets, frames * kSilentFrameBytes);
}

Bytes IndexOf(const std::vector<std::uint32_t>& offsets, std::size_t mediaBytes) {
    Bytes index;
    AppendNumber(index, offsets.size(), 4);
    AppendNumber(index, mediaBytes, 4);
    index.insert(index.end(), {3, 1, 2, 0});
    AppendNumber(index, 128000, 4);
    AppendNumber(index, 44100, 4);
    AppendNumber(index, 16, 2);
    AppendNumber(index, kSilentFrameBytes, 2);
    AppendNumber(index, kFrameSamples, 4);
    for (const std::uint32_t offset : offsets) {
        AppendNumber(index, offset, 4);
        AppendNumber(index, kSilentFrameBytes, 4);
    }
    return index;
}

Bytes CountedPcm(std::int64_t begin, std::int64_t end) {
    Bytes pcm;
    for (std::int64_t sample = begin; sample < end; ++sample) {
        for (const int channel : {0, 1})
            AppendNumber(pcm, static_cast<std::uint16_t>(CountedSample(sample, channel)), 2);
    }
    return pcm;
}

Bytes PcmOfWave(const Bytes& wave) {
    constexpr std::size_t kHeaderBytes = 44;
    if (wave.size() < kHeaderBytes) {
        ADD_FAILURE() << "a WAV file of " << wave.size() << " bytes";
        return {};
    }
    const auto data = wave.begin() + kHeaderBytes;
    const Bytes header = mpatool::WaveHeader({44100, 2}, wave.size() - kHeaderBytes);
    EXPECT_EQ(Bytes(wave.begin(), data), header);
    return Bytes(data, wave.end());
}

fs::path ToolTest::InFolder(const std::string& name) const {
    return Folder() / fs::path(Utf8(name));
}

ProcessResult ToolTest::Run(const std::vector<std::string>& arguments) const {
    return RunProcess(ToolPath(), arguments, Folder());
}

ProcessResult ToolTest::RunCounting(std::vector<std::string> arguments) const {
    return StartCounting(std::move(arguments)).Finish();
}

RunningProcess ToolTest::StartCounting(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"--module", CountingModulePath().string()});
    return RunningProcess(ToolPath(), arguments, Folder());
}

void ToolTest::Add(const std::string& name, const Bytes& bytes) const {
    WriteFile(InFolder(name), bytes);
    added_.push_back(name);
}

void ToolTest::AddPlanned(const std::string& name, const Bytes& stream, const Plan& plan) const {
    std::string text;
    for (const auto& [key, value] : plan)
        text += key + " " + std::to_string(value) + "\n";
    Add(name, stream);
    Add(name + ".plan", Bytes(text.begin(), text.end()));
    added_.push_back(name + ".requests");
}

void ToolTest::AddFolder(const std::string& name) const {
    fs::create_directory(InFolder(name));
    added_.push_back(name);
}

bool ToolTest::WaitForNewFiles(const std::string& ending, std::size_t count) const {
    for (int i = 0; i < 4000; ++i) {
        const auto names = NewFiles();
        const auto matching =
            std::ranges::count_if(names, [&](const std::string& name) { return name.ends_with(ending); });
        if (static_cast<std::size_t>(matching) >= count)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

bool ToolTest::Exists(const std::string& name) const {
    return fs::exists(InFolder(name));
}

Bytes ToolTest::Read(const std::string& name) const {
    return ReadFile(InFolder(name));
}

std::vector<std::pair<std::int64_t, std::int64_t>> ToolTest::Requests(const std::string& name) const {
    std::ifstream file(InFolder(name + ".requests"));
    std::vector<std::pair<std::int64_t, std::int64_t>> requests;
    std::int64_t start = 0;
    std::int64_t count = 0;
    while (file >> start >> count)
        requests.emplace_back(start, count);
    return requests;
}

std::vector<std::string> ToolTest::NewFiles() const {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(Folder())) {
        const std::string name = FileName(entry.path());
        if (std::ranges::find(added_, name) == added_.end())
            names.push_back(name);
    }
    std::ranges::sort(names);
    return names;
}

} // namespace test
