#include "mpatool/index/index_file.h"

#include "mpatool/output/tool_error.h"
#include "os/error_text.h"
#include "os/file.h"

#include <algorithm>
#include <array>

namespace mpatool {

std::optional<IndexFile> IndexFile::Beside(const std::wstring& mediaPath) {
    const std::wstring path = trnmpa::IndexPathFor(mediaPath);
    if (!os::FileExists(path))
        return std::nullopt;
    RequireReadable(path);
    IndexFile index;
    if (!index.file_.Open(path))
        throw ToolError(path, "cannot be opened");
    std::array<std::uint8_t, trnmpa::kIndexHeaderBytes> bytes = {};
    index.file_.Read(bytes);
    index.header_ = trnmpa::ParseIndexHeader(bytes);
    index.Rewind();
    return index;
}

void IndexFile::Rewind() {
    file_.SetPosition(trnmpa::kIndexHeaderBytes);
    entriesLeft_ = EntriesPresent();
}

std::int64_t IndexFile::EntriesPresent() const {
    const std::int64_t bytes = Bytes() - static_cast<std::int64_t>(trnmpa::kIndexHeaderBytes);
    const std::int64_t present =
        std::max<std::int64_t>(bytes, 0) / static_cast<std::int64_t>(trnmpa::kIndexEntryBytes);
    return std::min<std::int64_t>(present, header_.frameCount);
}

std::optional<trnmpa::MpaIndexEntry> IndexFile::Next() {
    std::array<std::uint8_t, trnmpa::kIndexEntryBytes> bytes = {};
    if (entriesLeft_ == 0 || file_.Read(bytes) != bytes.size())
        return std::nullopt;
    --entriesLeft_;
    return trnmpa::ParseIndexEntry(bytes);
}

} // namespace mpatool
