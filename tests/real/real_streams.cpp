#include "real/real_streams.h"

#include "support/test_files.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace test {

namespace {

constexpr std::int64_t kLayer3Delay = 1100;

std::filesystem::path Folder() {
    const char* folder = std::getenv("TRN_REAL_STREAMS");
    if (folder == nullptr)
        throw std::runtime_error("TRN_REAL_STREAMS is not set; run the tests through ctest");
    return folder;
}

RealStream ParseLine(const std::string& line) {
    std::istringstream in(line);
    RealStream stream;
    in >> stream.file >> stream.layer >> stream.version >> stream.rate >> stream.channels >> stream.kind >>
        stream.kbps >> stream.tag >> stream.shortBlocks >> stream.frames >> stream.smallestFrame >>
        stream.largestFrame >> stream.frameBytes;
    if (!in)
        throw std::runtime_error("manifest.tsv: cannot read: " + line);
    return stream;
}

std::vector<RealStream> ReadManifest() {
    std::ifstream file(Folder() / "manifest.tsv");
    std::vector<RealStream> streams;
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line))
        streams.push_back(ParseLine(line));
    if (streams.empty())
        throw std::runtime_error("manifest.tsv names no streams");
    return streams;
}

} // namespace

std::filesystem::path RealStream::Path() const {
    return Folder() / file;
}

std::filesystem::path RealStream::IndexPath() const {
    return Path().replace_extension(".idx");
}

Pcm RealStream::Reference() const {
    const Bytes bytes = ReadFile(Path().replace_extension(".pcm"));
    Pcm samples(bytes.size() / sizeof(std::int16_t));
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(std::int16_t));
    return samples;
}

Pcm RealStream::ExpectedDelivery() const {
    Pcm samples = Reference();
    if (HasDecodedTagFrame())
        samples.insert(samples.begin(), static_cast<std::size_t>(ValuesPerFrame()), 0);
    if (layer == 3)
        samples.erase(samples.begin(), samples.begin() + kLayer3Delay * channels);
    return samples;
}

std::int64_t RealStream::DeliveredSamples() const {
    const std::int64_t decoded = (frames + (HasDecodedTagFrame() ? 1 : 0)) * SamplesPerFrame();
    return layer == 3 ? decoded - kLayer3Delay : decoded;
}

std::int64_t RealStream::SamplesWithIndex() const {
    return (tag != "none" ? frames : frames - 1) * SamplesPerFrame();
}

const std::vector<RealStream>& RealStreams() {
    static const std::vector<RealStream> streams = ReadManifest();
    return streams;
}

const RealStream& RealStreamNamed(std::string_view file) {
    const auto found = std::ranges::find(RealStreams(), file, &RealStream::file);
    if (found == RealStreams().end())
        throw std::runtime_error("manifest.tsv does not name " + std::string(file));
    return *found;
}

} // namespace test
