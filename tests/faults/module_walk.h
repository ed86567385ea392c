/// Walks over what the module exports: every call in the order of a host's work, each answer written down.
#pragma once

#include "support/test_files.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// What a call leads to.
enum class StepKind : std::uint8_t {
    kObject,  ///< construction, copies, destruction, identity: cannot fail
    kOpen,    ///< up to the description of the file
    kSamples, ///< a read that stands by itself: what went wrong before has no part in it
    kSlice,   ///< a read that goes on from the one before
    kSeek,    ///< the slices behind it stand by themselves
    kIndex,   ///< building an index
    kClose,   ///< cannot fail; what is opened behind it stands by itself
};

struct Step {
    std::string name; ///< as "Class::Operation"
    StepKind kind = StepKind::kObject;
    std::int32_t result = 0;
    Bytes data = {};       ///< what was handed out, records and pointers' targets alike
    bool threw = false;    ///< an exception came out of the module
    bool metFault = false; ///< the fault happened during this call
    std::string Text() const;
};

/// One kind of object of the module, kept from run to run: a run begins with an open.
class ModuleWalk {
public:
    virtual ~ModuleWalk() = default;
    virtual std::string_view Name() const = 0;
    /// All calls, on the file given at construction.
    std::vector<Step> Run();

protected:
    virtual void Walk() = 0;

    /// Makes one call in a window of the fault layer and writes its answer down.
    template <typename Operation>
    std::int32_t Call(std::string name, StepKind kind, Operation&& operation);
    /// Adds to the data of the last call.
    void Data(const void* bytes, std::size_t size);
    void Text(std::wstring_view text);

private:
    void Begin(std::string name, StepKind kind);
    void End(std::int32_t result, bool threw);

    std::vector<Step> steps_;
};

/// Module object and reader object with all three engines.
std::unique_ptr<ModuleWalk> WalkPlugin(const std::filesystem::path& media);
/// TRN_MpAudioFileReader2.
std::unique_ptr<ModuleWalk> WalkSamples(const std::filesystem::path& media);
/// TRN_MpAudioFileReader, in the stream's own format and in another.
std::unique_ptr<ModuleWalk> WalkSlices(const std::filesystem::path& media, bool converts);
/// TRN_MpaFileCompReader.
std::unique_ptr<ModuleWalk> WalkPlaces(const std::filesystem::path& media);
/// TRN_MpaFileIndexCreator.
std::unique_ptr<ModuleWalk> WalkBuilder(const std::filesystem::path& media);
/// The plain C functions.
std::unique_ptr<ModuleWalk> WalkC(const std::filesystem::path& media);
/// The two interfaces that hosts may derive from.
std::unique_ptr<ModuleWalk> WalkBases();

/// Has the module throw and catch once: the first exception of a thread takes memory that some systems cannot
/// do without.
void MeetFirstException();

} // namespace test
