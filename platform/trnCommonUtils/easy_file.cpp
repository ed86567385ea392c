#include "trnCommonUtils/easy_file.h"

#include <string>

void TRN_EasyFile::SetReadBlockSize(std::uint32_t bytes) {
    reader_.SetBlockBytes(bytes);
}

std::int32_t TRN_EasyFile::Open(CComBSTR path) {
    reader_.Close();
    return reader_.Open(std::wstring(os::CharactersOf(path))) ? 1 : 0;
}

void TRN_EasyFile::Close() {
    reader_.Close();
}

std::uint32_t TRN_EasyFile::Read(void* buffer, std::uint32_t count, std::int32_t) {
    if (buffer == nullptr)
        return 0;
    return static_cast<std::uint32_t>(reader_.Read({static_cast<std::uint8_t*>(buffer), count}));
}

std::int64_t TRN_EasyFile::GetPos() const {
    return reader_.Position();
}

std::int32_t TRN_EasyFile::SetPos(std::int64_t position, std::int32_t) {
    return reader_.SetPosition(position) ? 1 : 0;
}

std::int64_t TRN_EasyFile::GetFileSize(bool) const {
    return reader_.Length();
}
