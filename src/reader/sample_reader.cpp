#include "reader/sample_reader.h"

#include "os/automation_string.h"
#include "plugin/module_log.h"
#include "plugin/module_settings.h"
#include "reader/built_in_frames.h"
#include "reader/create_frames.h"
#include "reader/result_codes.h"
#include "trcommontoolsr/file_access.h"

#include <algorithm>
#include <new>
#include <utility>

namespace trnmpa {

namespace {

constexpr std::size_t kPcmBufferBytes = 15360;
constexpr std::uint32_t kIndexBlockKiB = 512;
constexpr std::uint32_t kStorageIndexBlockKiB = 64;
constexpr std::int32_t kBuiltInDecoder = 0;
constexpr std::int32_t kExternalDecoder = 1;

/// The settings are read before the selector is kept.
std::int32_t ReadDecoderUse() {
    ReadModuleSettings();
    return Mp3DecoderUse();
}

std::uint32_t MediaBlockKiB() {
    return static_cast<std::uint32_t>(std::max(ReadMp3BufSize(), 0));
}

} // namespace

KwMpAudioReader2::KwMpAudioReader2() : decoderUse_(ReadDecoderUse()) {
    JoinLog();
}

KwMpAudioReader2::~KwMpAudioReader2() {
    Close();
    LeaveLog();
}

std::int32_t KwMpAudioReader2::Close() {
    frames_.reset();
    indexSource_.reset();
    pcmBufferA_.Release();
    pcmBufferB_.reset();
    stream_ = Stream();
    return kSuccess;
}

std::int32_t KwMpAudioReader2::Initialize() {
    Close();
    try {
        return CreateDecoder();
    } catch (...) {
        return kUnexpectedException;
    }
}

std::unique_ptr<FrameSource> KwMpAudioReader2::CreateFrames(std::int32_t decoderUse) {
    if (decoderUse == kExternalDecoder)
        return CreateExternalFrames();
    return std::make_unique<BuiltInFrames>();
}

std::int32_t KwMpAudioReader2::CreateDecoder() {
    frames_ = nullptr;
    try {
        frames_ = CreateFrames(decoderUse_);
    } catch (const std::bad_alloc&) {
        return decoderUse_ == kExternalDecoder ? kNoDecoder : kNoFrameBufferReader;
    } catch (int) {
        return kNoDecoder;
    }
    if (frames_ == nullptr)
        return kNoDecoder;
    try {
        pcmBufferA_.Require(kPcmBufferBytes);
        pcmBufferB_ = std::make_unique<std::int16_t[]>(kPcmBufferBytes / sizeof(std::int16_t));
    } catch (const std::bad_alloc&) {
        // Nothing must open a stream without them.
        frames_.reset();
        return kNoPcmBuffer;
    }
    return kSuccess;
}

std::int32_t KwMpAudioReader2::SetInputFile(const std::wstring& path) {
    try {
        // A second file starts from a new decoder: the old one is locked to the first file's format.
        if (stream_.hasFile) {
            const std::int32_t result = Initialize();
            if (result != kSuccess)
                return result;
        }
        if (frames_ == nullptr)
            return kNoDecoder;
        stream_.hasFile = true;
        stream_.path = path;
        frames_->SetFile(path, MediaBlockKiB());
        return FindIndex();
    } catch (...) {
        // Without the index that could not be looked for, positions would be others.
        Initialize();
        return kUnexpectedException;
    }
}

std::int32_t KwMpAudioReader2::FindIndex() {
    const std::wstring indexPath = IndexPathFor(stream_.path);
    if (IsStoragePath(stream_.path)) {
        OpenIndexFile(indexPath, kStorageIndexBlockKiB);
        return kSuccess;
    }
    if (TRCT_FileExists(os::ToAutomationString(indexPath)) == 0)
        return kSuccess;
    // TRN_EasyFile does not report a failed open. Without its index the file's positions would be others, so
    // it is not opened at all.
    TRCT_FileAccess readable;
    if (readable.OpenFile(os::ToAutomationString(indexPath), TRCT_OPEN_FOR_READING) == 0) {
        Initialize();
        return 0;
    }
    if (OpenIndexFile(indexPath, kIndexBlockKiB) != 0 && indexSource_->GetLength() == readable.GetLength())
        return kSuccess;
    Initialize();
    return 0;
}

std::int32_t KwMpAudioReader2::OpenIndexFile(const std::wstring& indexPath, std::uint32_t blockKiB) {
    auto index = std::make_unique<CMpAudioFrameBufferReader>();
    index->UseEasyFile(0, blockKiB);
    const std::int32_t opened = index->Open(indexPath);
    if (opened != 0) {
        indexSource_ = std::move(index);
        stream_.hasIndex = true;
    }
    return opened;
}

std::int32_t KwMpAudioReader2::GetStreamInfo(KW_MEDIA_BASE_INFO_ST* record) {
    try {
        if (stream_.needsOpen) {
            const std::int32_t result = CompleteOpen();
            if (result != kSuccess)
                return result;
        }
        if (record == nullptr)
            return kOpenFailed;
        *record = stream_.mediaInfo;
        return kSuccess;
    } catch (...) {
        return kUnexpectedException;
    }
}

std::int32_t KwMpAudioReader2::CompleteOpen() {
    if (frames_ == nullptr)
        return kNoDecoder;
    const bool isKnownDecoder = decoderUse_ == kBuiltInDecoder || decoderUse_ == kExternalDecoder;
    if (!isKnownDecoder || !stream_.hasFile || !frames_->Open())
        return kMediaNotOpened;
    std::int32_t result = kSuccess;
    if (stream_.hasIndex) {
        result = OpenWithIndex();
    } else {
        try {
            result = OpenWithoutIndex();
        } catch (...) {
            return kOpenFailed;
        }
    }
    if (result != kSuccess)
        return result;
    stream_.mediaInfo.audioFormat = stream_.format;
    stream_.currentFrame = 0;
    stream_.heldFrame.reset();
    stream_.nextFrame = 0;
    stream_.needsOpen = false;
    return kSuccess;
}

} // namespace trnmpa
