/// The log that the sample reader engines of the process share.
#pragma once

#include <cstdint>

namespace trnmpa {

/// Each engine joins when it is made and leaves when it is destroyed; the log object (a TRN_LogManagerU named
/// "trnmpafileread") lives while at least one has joined. Any thread may call these; they never throw.
void JoinLog() noexcept;
void LeaveLog() noexcept;

/// Writes "lame decode error, return mute. frmNo:" and the number of the frame that failed. Nothing is
/// written when nobody has joined.
void LogDecodeError(std::int32_t frameNumber) noexcept;

/// True while the log object lives.
bool LogExists() noexcept;

} // namespace trnmpa
