#include "fileio/frame_buffer_reader.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>
#include <string_view>

namespace trnmpa {

namespace {

/// What the product family passes to its file libraries.
constexpr std::int32_t kEasyFileWait = 30;

constexpr std::wstring_view kStoragePrefix = L"dqs:\\";

constexpr std::size_t kInfoTagOffset = 36;
constexpr std::string_view kInfoTagText = "Info";

std::uint32_t BytesOfKiB(std::uint32_t kiB) {
    const std::uint64_t bytes = std::uint64_t{kiB} * 1024;
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(bytes, std::numeric_limits<std::uint32_t>::max()));
}

} // namespace

bool IsStoragePath(const std::wstring& path) {
    return path.find(kStoragePrefix) != std::wstring::npos;
}

CMpAudioFrameBufferReader::CMpAudioFrameBufferReader() {
    fileAccess_.Initialize(TRCT_INITIAL_VALUE);
}

CMpAudioFrameBufferReader::~CMpAudioFrameBufferReader() {
    Close();
}

std::int32_t CMpAudioFrameBufferReader::UseEasyFile(int, std::uint32_t blockKiB) {
    useEasyFile_ = 1;
    try {
        if (easyFile_ == nullptr)
            easyFile_ = std::make_unique<TRN_EasyFile>();
    } catch (const std::exception&) {
        return 0;
    }
    easyFile_->SetReadBlockSize(BytesOfKiB(blockKiB));
    return 1;
}

std::int32_t CMpAudioFrameBufferReader::Open(const std::wstring& path) {
    if (IsStoragePath(path))
        useEasyFile_ = 0;
    try {
        std::wstring stored = path;
        CComBSTR name = os::ToAutomationString(path);
        if (useEasyFile_ == 0) {
            if (fileAccess_.OpenFile(std::move(name), TRCT_OPEN_FOR_READING) == 0)
                return 0;
        } else if (easyFile_ != nullptr) {
            easyFile_->Open(std::move(name));
        }
        path_ = std::move(stored);
        return 1;
    } catch (const std::exception&) {
        return 0;
    }
}

std::int32_t CMpAudioFrameBufferReader::Close() {
    if (useEasyFile_ == 0) {
        fileAccess_.CloseFile();
    } else if (easyFile_ != nullptr) {
        easyFile_->Close();
        easyFile_.reset();
    }
    return 1;
}

unsigned int CMpAudioFrameBufferReader::Read(void* buffer, int count) {
    if (count < 1)
        return 0;
    const auto wanted = static_cast<std::uint32_t>(count);
    if (useEasyFile_ == 0)
        return fileAccess_.Read(buffer, wanted) == wanted ? wanted : 0;
    return easyFile_ != nullptr ? easyFile_->Read(buffer, wanted, kEasyFileWait) : 0;
}

std::int64_t CMpAudioFrameBufferReader::GetPosition() const {
    if (useEasyFile_ == 0)
        return fileAccess_.GetPosition();
    return easyFile_ != nullptr ? easyFile_->GetPos() : 0;
}

std::int64_t CMpAudioFrameBufferReader::GetLength() const {
    if (useEasyFile_ == 0)
        return fileAccess_.GetLength();
    return easyFile_ != nullptr ? easyFile_->GetFileSize(true) : 0;
}

std::int64_t CMpAudioFrameBufferReader::SetPosition(std::int64_t position) {
    if (useEasyFile_ == 0)
        return fileAccess_.SetPosition(position);
    if (easyFile_ == nullptr)
        return -1;
    easyFile_->SetPos(position, kEasyFileWait);
    return position;
}

std::uint8_t CMpAudioFrameBufferReader::InfoTagKind(const std::uint8_t* frame, std::uint32_t length) {
    if (frame == nullptr || length < kInfoTagOffset + kInfoTagText.size())
        return kNoInfoTag;
    const bool info = std::memcmp(frame + kInfoTagOffset, kInfoTagText.data(), kInfoTagText.size()) == 0;
    return info ? kInfoTag : kNoInfoTag;
}

} // namespace trnmpa
