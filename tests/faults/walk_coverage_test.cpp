/// The walks make every call that the module exports.
#include "faults/module_walk.h"
#include "plugin/exported_symbols.h"
#include "reader/reader_streams.h"

#include <gmock/gmock.h>

#include <charconv>
#include <cstdlib>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace {

using namespace test;
using Names = std::set<std::string>;

/// Takes a name with its length before it, as the Itanium C++ ABI writes it.
std::optional<std::string> TakeName(std::string_view& text) {
    std::size_t length = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), length);
    text.remove_prefix(static_cast<std::size_t>(parsed.ptr - text.data()));
    if (parsed.ec != std::errc() || length > text.size())
        return std::nullopt;
    const std::string name(text.substr(0, length));
    text.remove_prefix(length);
    return name;
}

/// "Class::Operation" of an exported symbol; nothing for one that is no function of a class.
std::optional<std::string> CallOf(std::string_view symbol) {
    if (!symbol.starts_with("_ZN"))
        return std::nullopt;
    symbol.remove_prefix(symbol.starts_with("_ZNK") ? 4 : 3);
    const auto className = TakeName(symbol);
    if (!className)
        return std::nullopt;
    if (symbol.starts_with("C"))
        return *className + "::" + *className;
    if (symbol.starts_with("D"))
        return *className + "::~" + *className;
    if (symbol.starts_with("aS"))
        return *className + "::operator=";
    const auto operation = TakeName(symbol);
    return operation ? std::optional(*className + "::" + *operation) : std::nullopt;
}

Names ExportedCalls() {
    const char* path = std::getenv("TRN_MODULE");
    Names calls;
    for (const std::string& symbol : DescribeLibrary(ReadFile(path != nullptr ? path : "")).exports) {
        const auto call = CallOf(symbol);
        // The base of the sample reader is made, copied and destroyed with it.
        if (call && !call->starts_with("ITRN_AUDIO_READER_BASE::"))
            calls.insert(*call);
        else if (!symbol.starts_with("_Z"))
            calls.insert(symbol);
    }
    return calls;
}

/// The virtual operations behind the one exported function.
const Names kSlots = {
    "PLUGIN_FILE_READER_MODULE::GetModuleInfo",   "PLUGIN_FILE_READER_MODULE::GetClassIdForFile",
    "PLUGIN_FILE_READER_MODULE::ModuleReserved1", "PLUGIN_FILE_READER_MODULE::CreateReaderClass",
    "PLUGIN_FILE_READER_MODULE::ModuleReserved2", "PLUGIN_FILE_READER_CLASS::GetClassInfo",
    "PLUGIN_FILE_READER_CLASS::OpenFile",         "PLUGIN_FILE_READER_CLASS::CreateFileIndex",
    "PLUGIN_FILE_READER_CLASS::GetIndexProgress", "PLUGIN_FILE_READER_CLASS::CancelIndexing",
    "PLUGIN_FILE_READER_CLASS::GetFileInfo",      "PLUGIN_FILE_READER_CLASS::ClassReserved1",
    "PLUGIN_FILE_READER_CLASS::ReadSamples",      "PLUGIN_FILE_READER_CLASS::ClassReserved2",
};

TEST(WalkCoverage, EveryExportedCallIsMade) {
    const ScratchFolder folder;
    const std::filesystem::path media = folder.Add("song.mp3", SteadyStream().bytes);
    Names made;
    for (const auto& walk : {WalkPlugin(media), WalkSamples(media), WalkSlices(media, false),
                             WalkPlaces(media), WalkBuilder(media), WalkBases(), WalkC(media)})
        for (const Step& step : walk->Run())
            made.insert(step.name);
    const Names exported = ExportedCalls();
    EXPECT_GT(exported.size(), 40U);
    EXPECT_THAT(made, testing::IsSupersetOf(exported));
    EXPECT_THAT(made, testing::IsSupersetOf(kSlots));
}

} // namespace
