#include "trcommontoolsr/file_ex.h"

#include "trcommontoolsr/storage_path.h"

#include <exception>

std::int32_t TRCT_FileEx::Initialize(const TRCT_FILE_EX_SETTINGS&) {
    return 1;
}

std::int64_t TRCT_FileEx::Create(CComBSTR path, std::uint32_t access, std::uint32_t sharing, void* security,
                                 std::uint32_t creation, std::uint32_t attributes,
                                 std::int64_t templateHandle) {
    Close();
    if (access != TRCT_ACCESS_READ_WRITE || sharing != TRCT_SHARE_READ_WRITE || security != nullptr ||
        creation != TRCT_CREATE_ALWAYS || attributes != TRCT_ATTRIBUTE_NORMAL || templateHandle != 0)
        return 0;
    try {
        const std::optional<std::wstring> place = storage::Resolve(os::CharactersOf(path));
        open_ = place && file_.CreateAlways(*place);
    } catch (const std::exception&) {
        open_ = false;
    }
    return open_ ? 1 : 0;
}

std::int64_t TRCT_FileEx::Seek(std::int64_t distance, std::uint32_t origin) {
    return distance == 0 && origin == TRCT_SEEK_CURRENT ? position_ : 0;
}

std::int32_t TRCT_FileEx::SetPosition(std::int64_t position) {
    if (!open_ || !file_.SetPosition(position))
        return 0;
    position_ = position;
    return 1;
}

std::uint32_t TRCT_FileEx::Write(const void* buffer, std::uint32_t count) {
    if (!open_ || buffer == nullptr ||
        file_.Write({static_cast<const std::uint8_t*>(buffer), count}) != os::WriteResult::kDone)
        return 0;
    position_ += count;
    return count;
}

std::int32_t TRCT_FileEx::Close() {
    open_ = false;
    position_ = 0;
    return file_.Close() ? 1 : 0;
}
