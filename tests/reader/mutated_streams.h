/// Engines that read files whose index was changed, and the files.
#pragma once

#include "reader/engine.h"
#include "reader/expected_stream.h"
#include "support/test_files.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace test {

/// What every engine can be asked for.
class EngineUnderTest {
public:
    virtual ~EngineUnderTest() = default;

    /// 1 when the file can be read.
    virtual std::int32_t Open(const std::filesystem::path& path) = 0;
    virtual Answer Read(std::int64_t start, std::uint32_t count) = 0;
    /// Bytes of one sample of all channels, as the engine says.
    virtual std::size_t SampleBytes() const = 0;

    /// Whether an operation may have this result.
    virtual bool MayOpenGive(std::int32_t result) const = 0;
    virtual bool MayReadGive(std::int32_t result) const = 0;
};

struct EngineKind {
    std::string name;
    std::unique_ptr<EngineUnderTest> (*create)();
};

/// Every engine that reads an index.
const std::vector<EngineKind>& EngineKinds();

/// The short streams whose indexes are changed.
constexpr int kMutatedStreams = 6;
bitstream::Stream MutatedStream(int number);

} // namespace test
