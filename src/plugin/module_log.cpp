#include "plugin/module_log.h"

#include "LogManagerU/log_manager.h"

#include <memory>
#include <mutex>

namespace trnmpa {

namespace {

constexpr const wchar_t* kConfigurationName = L"trnmpafileread";

struct Channel {
    std::mutex mutex;
    std::unique_ptr<TRN_LogManagerU> log;
    std::uint32_t liveCount = 0;
};

Channel& TheChannel() {
    static Channel channel;
    return channel;
}

std::unique_ptr<TRN_LogManagerU> MakeLog() noexcept {
    try {
        auto log = std::make_unique<TRN_LogManagerU>();
        log->ConfigName(kConfigurationName);
        return log;
    } catch (...) {
        return nullptr;
    }
}

} // namespace

void JoinLog() noexcept {
    Channel& channel = TheChannel();
    const std::lock_guard lock(channel.mutex);
    if (channel.liveCount == 0)
        channel.log = MakeLog();
    ++channel.liveCount;
}

void LeaveLog() noexcept {
    Channel& channel = TheChannel();
    const std::lock_guard lock(channel.mutex);
    if (channel.liveCount > 0 && --channel.liveCount == 0)
        channel.log.reset();
}

void LogDecodeError(std::int32_t frameNumber) noexcept {
    Channel& channel = TheChannel();
    const std::lock_guard lock(channel.mutex);
    if (channel.log == nullptr)
        return;
    try {
        *channel.log << L"lame decode error, return mute. frmNo:" << frameNumber << TRN_LogManagerU::endl;
    } catch (...) {
        // A lost line is better than a failing read.
    }
}

bool LogExists() noexcept {
    Channel& channel = TheChannel();
    const std::lock_guard lock(channel.mutex);
    return channel.log != nullptr;
}

} // namespace trnmpa
