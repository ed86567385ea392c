#include "fileio/file_writer.h"

namespace trnmpa {

CFileWriter::CFileWriter() {
    TRCT_FILE_EX_SETTINGS settings;
    settings.leading[1] = 2;
    settings.leading[3] = 0x2000000;
    settings.trailing[0] = 0x400000;
    settings.trailing[1] = 0x1000000;
    file_.Initialize(settings);
}

CFileWriter::~CFileWriter() {
    Close();
}

std::int32_t CFileWriter::Open(const std::wstring& path) {
    Close();
    handle_ = file_.Create(os::ToAutomationString(path), TRCT_ACCESS_READ_WRITE, TRCT_SHARE_READ_WRITE,
                           nullptr, TRCT_CREATE_ALWAYS, TRCT_ATTRIBUTE_NORMAL, 0);
    return handle_ != 0 ? 1 : 0;
}

std::int32_t CFileWriter::GetPosition() {
    return handle_ != 0 ? static_cast<std::int32_t>(file_.Seek(0, TRCT_SEEK_CURRENT)) : 0;
}

std::int32_t CFileWriter::SetPosition(std::uint32_t position) {
    return handle_ != 0 ? file_.SetPosition(position) : 0;
}

std::int32_t CFileWriter::Write(const void* buffer, std::uint32_t count) {
    if (handle_ == 0 || file_.Write(buffer, count) < count)
        return 0;
    return static_cast<std::int32_t>(count);
}

std::int32_t CFileWriter::Close() {
    // The handle stays: the file object bears being closed again.
    if (handle_ != 0)
        file_.Close();
    return 1;
}

} // namespace trnmpa
