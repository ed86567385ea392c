/// The index beside a media file, read from front to back.
#pragma once

#include "index/index_format.h"
#include "os/block_reader.h"

#include <cstdint>
#include <optional>
#include <string>

namespace mpatool {

/// An open index. Entries are read one by one: there may be millions.
class IndexFile {
public:
    /// Opens the index of `mediaPath`; nothing when there is none. Throws ToolError when it cannot be read.
    static std::optional<IndexFile> Beside(const std::wstring& mediaPath);

    /// What a short file lacks reads as zeros.
    const trnmpa::MpaIndexHeader& Header() const { return header_; }
    std::int64_t Bytes() const { return file_.Length(); }

    /// The entries that the file has room for, at most those that its header claims.
    std::int64_t EntriesPresent() const;

    /// The next entry; nothing behind the last of those.
    std::optional<trnmpa::MpaIndexEntry> Next();
    /// Goes back to the first entry.
    void Rewind();

private:
    IndexFile() = default;

    os::BlockReader file_;
    trnmpa::MpaIndexHeader header_;
    std::int64_t entriesLeft_ = 0;
};

} // namespace mpatool
