/// The checks of a selftest, in the order in which they run.
#pragma once

#include "mpatool/selftest/verdicts.h"
#include "trnmpafileread/plugin.h"

#include <memory>
#include <string>

namespace mpatool {

/// A file of the selftest's folder, which holds the built-in streams.
class SelftestFolder {
public:
    explicit SelftestFolder(std::wstring path) : path_(std::move(path)) {}
    std::wstring PathOf(const std::wstring& name) const;

private:
    std::wstring path_;
};

/// A new reader for Layer III; null when the module makes none.
std::unique_ptr<PLUGIN_FILE_READER_CLASS> NewReader(PLUGIN_FILE_READER_MODULE& module);

/// Identity record, names of files, creation of readers.
void CheckModule(PLUGIN_FILE_READER_MODULE& module, Verdicts& verdicts);
/// Identity record of a reader, and what a reader does before anything is open.
void CheckNewReader(PLUGIN_FILE_READER_MODULE& module, Verdicts& verdicts);
/// OpenFile in all its ways, and the probe's description.
void CheckOpening(PLUGIN_FILE_READER_MODULE& module, const SelftestFolder& folder, Verdicts& verdicts);
/// PCM of the built-in streams, requests in any order, two readers at once.
void CheckReading(PLUGIN_FILE_READER_MODULE& module, const SelftestFolder& folder, Verdicts& verdicts);
/// The index builder, and reading with its index.
void CheckIndexing(PLUGIN_FILE_READER_MODULE& module, const SelftestFolder& folder, Verdicts& verdicts);

} // namespace mpatool
