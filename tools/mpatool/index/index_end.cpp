#include "mpatool/index/index_end.h"

#include "mpa/frame_header.h"
#include "mpa/header_search.h"
#include "mpatool/output/tool_error.h"
#include "os/file.h"

#include <algorithm>
#include <vector>

namespace mpatool {

void RequireReadableBehind(const std::wstring& media, std::int64_t end, std::int64_t mediaBytes) {
    constexpr std::int64_t kSearched = trnmpa::kHeaderSearchBytes + trnmpa::kFrameHeaderBytes;
    const std::int64_t wanted = std::clamp<std::int64_t>(mediaBytes - end, 0, kSearched);
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(wanted));
    os::File file;
    if (!file.Open(media) || file.ReadAt(end, bytes) != bytes.size())
        throw ToolError(media, "could not be read to its end");
}

} // namespace mpatool
