#include "trcommontoolsr/file_access.h"

#include "trcommontoolsr/storage_path.h"

#include <exception>

std::int32_t TRCT_FileAccess::Initialize(std::int32_t) {
    return 1;
}

std::int32_t TRCT_FileAccess::OpenFile(CComBSTR path, std::int32_t) {
    reader_.Close();
    try {
        const std::optional<std::wstring> place = storage::Resolve(os::CharactersOf(path));
        return place && reader_.Open(*place) ? 1 : 0;
    } catch (const std::exception&) {
        return 0;
    }
}

std::int32_t TRCT_FileAccess::CloseFile() {
    reader_.Close();
    return 1;
}

std::uint32_t TRCT_FileAccess::Read(void* buffer, std::uint32_t count) {
    if (buffer == nullptr)
        return 0;
    return static_cast<std::uint32_t>(reader_.Read({static_cast<std::uint8_t*>(buffer), count}));
}

std::int64_t TRCT_FileAccess::GetPosition() const {
    return reader_.Position();
}

std::int64_t TRCT_FileAccess::GetLength() const {
    return reader_.Length();
}

std::int32_t TRCT_FileAccess::SetPosition(std::int64_t position) {
    return reader_.SetPosition(position) ? 1 : 0;
}

void TRCT_FileAccess::SetStorageFolder(const std::wstring& folder) {
    storage::SetFolder(folder);
}

std::int32_t TRCT_FileExists(CComBSTR path) {
    const std::optional<std::wstring> place = storage::Resolve(os::CharactersOf(path));
    return place && os::FileExists(*place) ? 1 : 0;
}
