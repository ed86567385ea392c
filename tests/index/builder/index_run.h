/// One run of the index builder as a host drives it.
#pragma once

#include "support/test_files.h"
#include "trnmpafileread/index_creator.h"

#include <filesystem>

namespace test {

/// Where the index of a media file must lie.
std::filesystem::path IndexPathOf(const std::filesystem::path& media);

CComBSTR Automation(const std::filesystem::path& path);

PROGRESS_INFO ProgressOf(TRN_MpaFileIndexCreator& creator);

struct IndexRun {
    std::int32_t opened = -1; ///< SetInputFile's result
    std::int32_t built = -1;  ///< CreateFileIndex's, which is called in any case
    PROGRESS_INFO progress = {};
    Bytes index; ///< what stands on disk in the end; empty when nothing does
};

/// With a builder of its own.
IndexRun RunBuilder(const std::filesystem::path& media);

/// The same for a new media file of that content in the folder. What an earlier call made there is deleted
/// first, which is faster than writing over it.
IndexRun RunBuilderOn(const ScratchFolder& folder, const Bytes& media);

/// An index file's header without frames: what a run leaves that did not finish.
inline const Bytes kPlaceholder = Bytes(28);

/// The first 28 bytes of a file, fewer when it is shorter.
Bytes HeaderOnDisk(const std::filesystem::path& index);

} // namespace test
