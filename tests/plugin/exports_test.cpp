/// The built library exports what src/plugin/exports.txt lists, and nothing else.
#include "plugin/exported_symbols.h"

#include "os/wave_format.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>

namespace {

using Names = std::set<std::string>;

test::LibraryDescription BuiltModule() {
    const char* path = std::getenv("TRN_MODULE");
    if (path == nullptr)
        throw std::runtime_error("TRN_MODULE is not set; run the tests through ctest");
    return test::DescribeLibrary(test::ReadFile(path));
}

struct ListedExports {
    Names names;
    Names classes;
};

ListedExports Listed() {
    const test::Bytes file = test::ReadFile(test::SourceFolder() / "src" / "plugin" / "exports.txt");
    std::istringstream text(std::string(file.begin(), file.end()));
    ListedExports listed;
    for (std::string word; text >> word;) {
        if (word != "class")
            listed.names.insert(word);
        else if (text >> word)
            listed.classes.insert(word);
    }
    return listed;
}

/// As the Itanium C++ ABI writes a class' name.
std::string Encoded(const std::string& name) {
    return std::to_string(name.size()) + name;
}

/// A member, the virtual table, the type description or its name.
bool BelongsTo(std::string_view symbol, const std::string& className) {
    const std::string encoded = Encoded(className);
    constexpr std::array kMembers = {"_ZN", "_ZNK"};
    constexpr std::array kWhole = {"_ZTV", "_ZTI", "_ZTS"};
    return std::ranges::any_of(kMembers, [&](const char* p) { return symbol.starts_with(p + encoded); }) ||
           std::ranges::any_of(kWhole, [&](const char* p) { return symbol == p + encoded; });
}

/// The public operations of each exported class, behind "_ZN" and the class' name; "!" stands for
/// std::int64_t. C1 and D1 make and destroy whole objects, C2 and D2 the base of a host's own, aS is the
/// assignment.
const std::map<std::string, std::vector<const char*>>& Operations() {
    static const std::map<std::string, std::vector<const char*>> operations = {
        {"ITRN_AUDIO_READER_BASE", {"C2Ev", "C2ERKS_", "aSERKS_", "D2Ev"}},
        {"ITRN_VIDEO_READER_BASE", {"C1Ev", "C2Ev", "C1ERKS_", "C2ERKS_", "aSERKS_", "D1Ev", "D2Ev", "D0Ev"}},
        {"TRN_MpAudioFileReader",
         {"C1Ev", "C1ERKS_", "aSERKS_", "D1Ev", "D0Ev", "10InitializeEv", "18SetPerPCMFrameTimeE!",
          "12SetInputFileE8CComBSTR", "21GetOriginalStreamInfoER@", "19SetOutputWAVEFormatER@",
          "9StartReadEv", "6SeekToEj", "9ReadFrameEPPhRiP@S2_", "8StopReadEv"}},
        {"TRN_MpAudioFileReader2",
         {"C1Ev", "C1ERKS_", "aSERKS_", "D1Ev", "D0Ev", "10InitializeEv", "6AddRefEv", "6GetRefEv",
          "7ReleaseEv", "12SetInputFileE8CComBSTR", "10GetSamplesE17AudioReaderDataInPPhRiPm",
          "11GetItemInfoEPv", "12ConfigureObjEiPviS0_i"}},
        {"TRN_MpaFileCompReader",
         {"C1Ev", "C1ERKS_", "aSERKS_", "D1Ev", "D0Ev", "10InitializeEv", "12SetInputFileE8CComBSTR",
          "9StartReadEv", "21GetOriginalStreamInfoER20tag_KW_MpaStreamInfo", "6SeekToE!Rm",
          "15ReadAudioSampleEPhRi", "8StopReadEv"}},
        {"TRN_MpaFileIndexCreator",
         {"C1Ev", "C1ERKS_", "aSERKS_", "D1Ev", "D0Ev", "10InitializeEv", "12SetInputFileE8CComBSTR",
          "15CreateFileIndexEv", "21GetFileIdxingProgressER13PROGRESS_INFO", "14CancelIndexingEv"}},
    };
    return operations;
}

std::string Symbol(const std::string& className, std::string operation) {
    const auto insert = [&](char place, const char* type) {
        if (const std::size_t found = operation.find(place); found != std::string::npos)
            operation.replace(found, 1, type);
    };
    insert('!', typeid(std::int64_t).name());
    insert('@', typeid(WAVEFORMATEX).name());
    return "_ZN" + Encoded(className) + operation;
}

} // namespace

TEST(Exports, EveryListedNameIsThere) {
    const ListedExports listed = Listed();
    EXPECT_THAT(listed.names, testing::ElementsAre(
                                  "GetPluginReadModule", "trnmpa_api_version", "trnmpa_error_text",
                                  "trnmpa_index_build_utf16", "trnmpa_index_build_utf8",
                                  "trnmpa_kernels_available", "trnmpa_reader_close", "trnmpa_reader_info",
                                  "trnmpa_reader_open_utf16", "trnmpa_reader_open_utf8", "trnmpa_reader_read",
                                  "trnmpa_slices_close", "trnmpa_slices_next", "trnmpa_slices_open_utf16",
                                  "trnmpa_slices_open_utf8", "trnmpa_slices_seek", "trnmpa_use_kernels"));
    EXPECT_THAT(BuiltModule().exports, testing::IsSupersetOf(listed.names));
}

TEST(Exports, WhatElseIsThereBelongsToAListedClass) {
    const ListedExports listed = Listed();
    const test::LibraryDescription module = BuiltModule();
    for (const std::string& symbol : module.exports) {
        const bool belongs = std::ranges::any_of(
            listed.classes, [&](const std::string& name) { return BelongsTo(symbol, name); });
        EXPECT_TRUE(belongs || listed.names.contains(symbol)) << symbol;
    }
    EXPECT_EQ(module.unnamedExports, 0u);
}

TEST(Exports, EveryOperationOfAListedClassIsThere) {
    const Names exports = BuiltModule().exports;
    Names described;
    for (const auto& [name, operations] : Operations()) {
        described.insert(name);
        for (const char* operation : operations)
            EXPECT_THAT(exports, testing::Contains(Symbol(name, operation)));
        EXPECT_THAT(exports, testing::Contains("_ZTV" + Encoded(name)));
        EXPECT_THAT(exports, testing::Contains("_ZTI" + Encoded(name)));
    }
    EXPECT_EQ(described, Listed().classes) << "each class has its row in this test";
}

TEST(Exports, TheLibraryIsKnownByItsName) {
    EXPECT_EQ(BuiltModule().name, TRN_MODULE_NAME);
}
