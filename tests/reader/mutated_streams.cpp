#include "reader/mutated_streams.h"

#include "reader/foreign_bytes.h"
#include "reader/reader_streams.h"

#include <algorithm>

namespace test {

namespace {

using bitstream::StreamOptions;
using bitstream::Version;

class SampleReader final : public EngineUnderTest {
public:
    std::int32_t Open(const std::filesystem::path& path) override { return engine_.Open(path); }
    Answer Read(std::int64_t start, std::uint32_t count) override { return engine_.Ask(start, count); }
    std::size_t SampleBytes() const override { return engine_.Format().nBlockAlign; }

    bool MayOpenGive(std::int32_t result) const override {
        return result == trnmpa::kSuccess || result == trnmpa::kUnexpectedException;
    }
    bool MayReadGive(std::int32_t result) const override {
        return result == trnmpa::kSuccess || result == trnmpa::kDecodeFailed ||
               result == trnmpa::kUnexpectedException;
    }

private:
    Engine engine_;
};

StreamOptions ShortOptions(Version version, int layer, int mode, std::vector<int> bitrateIndices) {
    StreamOptions options;
    options.seed = 31;
    options.frames = 14;
    options.version = version;
    options.layer = layer;
    options.mode = mode;
    options.bitrateIndices = std::move(bitrateIndices);
    options.layer3.blocks = {{0}, {1}, {2}, {3}};
    return options;
}

} // namespace

const std::vector<EngineKind>& EngineKinds() {
    static const std::vector<EngineKind> kinds = {
        {"SampleReader",
         []() -> std::unique_ptr<EngineUnderTest> { return std::make_unique<SampleReader>(); }},
    };
    return kinds;
}

bitstream::Stream MutatedStream(int number) {
    using namespace model;
    const Surroundings plain;
    const Surroundings dressed{.tag = true, .infoFrame = true, .junk = true, .seed = 3};
    switch (number) {
    case 0:
        return Surround(WriteStream(ShortOptions(Version::kMpeg1, 3, kStereo, {9})), plain);
    case 1:
        return Surround(WriteStream(ShortOptions(Version::kMpeg1, 3, kJointStereo, {1, 1, 14, 5})), dressed);
    case 2:
        return Surround(WriteStream(ShortOptions(Version::kMpeg2, 3, kSingleChannel, {2, 8})), plain);
    case 3:
        return Surround(WriteStream(ShortOptions(Version::kMpeg25, 3, kStereo, {3, 3, 9})), dressed);
    case 4:
        return Surround(WriteStream(ShortOptions(Version::kMpeg1, 2, kStereo, {8})), plain);
    default:
        return Surround(WriteStream(ShortOptions(Version::kMpeg1, 2, kSingleChannel, {5, 10})), dressed);
    }
}

} // namespace test
