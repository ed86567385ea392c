/// Runs of the built tool.
#pragma once

#include "support/subprocess.h"
#include "support/test_files.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// The built tool; the module of this folder that hands out counted samples.
std::filesystem::path ToolPath();
std::filesystem::path CountingModulePath();

/// `frames` layer III frames of zeros: MPEG-1, 128 kbit/s, 44100 Hz, stereo, without padding.
Bytes SilentLayer3(std::size_t frames);
inline constexpr std::int64_t kSilentFrameBytes = 417;
inline constexpr std::int64_t kFrameSamples = 1152;
inline constexpr std::int64_t kLayer3Delay = 1100;

/// The same frames with the header `header` instead, each of `frameBytes`.
Bytes FramesOf(std::array<std::uint8_t, 4> header, std::size_t frameBytes, std::size_t frames);

/// An index whose entries are `offsets`, for such a stream of `mediaBytes` bytes.
Bytes IndexOf(const std::vector<std::uint32_t>& offsets, std::size_t mediaBytes = 0);

/// The index of SilentLayer3(frames).
Bytes IndexOfSilence(std::size_t frames);

/// The counted samples from `begin` up to `end`, two channels, as the bytes of raw PCM.
Bytes CountedPcm(std::int64_t begin, std::int64_t end);

/// The PCM of a WAV file of 44.1 kHz stereo whose header is checked on the way.
Bytes PcmOfWave(const Bytes& wave);

class ToolTest : public testing::Test {
protected:
    using Plan = std::map<std::string, std::int64_t>;

    const std::filesystem::path& Folder() const { return folder_.Path(); }

    /// Runs the tool in the scratch folder, with the real module or with the counting one.
    ProcessResult Run(const std::vector<std::string>& arguments) const;
    ProcessResult RunCounting(std::vector<std::string> arguments) const;
    RunningProcess StartCounting(std::vector<std::string> arguments) const;

    /// Puts a file into the scratch folder.
    void Add(const std::string& name, const Bytes& bytes) const;
    /// Puts a stream there together with the counting module's plan for it.
    void AddPlanned(const std::string& name, const Bytes& stream, const Plan& plan) const;

    /// Makes a folder there.
    void AddFolder(const std::string& name) const;

    bool Exists(const std::string& name) const;
    Bytes Read(const std::string& name) const;

    /// The requests that the counting module got: start and count.
    std::vector<std::pair<std::int64_t, std::int64_t>> Requests(const std::string& name) const;

    /// Waits until the names of some new files end in `ending`, `count` of them; false when they do not come.
    bool WaitForNewFiles(const std::string& ending, std::size_t count = 1) const;

    /// Names of the files in the scratch folder that the test has not put there itself.
    std::vector<std::string> NewFiles() const;

    std::filesystem::path InFolder(const std::string& name) const;

private:
    ScratchFolder folder_;
    mutable std::vector<std::string> added_;
};

} // namespace test
