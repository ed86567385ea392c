#include "fileio/file_reader.h"

namespace trnmpa {

CFileReader::CFileReader() {
    file_.Initialize(TRCT_INITIAL_VALUE);
}

CFileReader::~CFileReader() {
    Close();
}

std::int32_t CFileReader::Open(const std::wstring& path) {
    return file_.OpenFile(os::ToAutomationString(path), TRCT_OPEN_FOR_READING);
}

void CFileReader::Close() {
    file_.CloseFile();
}

std::int32_t CFileReader::Read(void* buffer, std::int32_t count) {
    return count > 0 ? static_cast<std::int32_t>(file_.Read(buffer, static_cast<std::uint32_t>(count))) : 0;
}

std::int64_t CFileReader::GetPosition() const {
    return file_.GetPosition();
}

std::int64_t CFileReader::GetLength() const {
    return file_.GetLength();
}

std::int32_t CFileReader::SetPosition(std::int64_t position) {
    return file_.SetPosition(position);
}

} // namespace trnmpa
