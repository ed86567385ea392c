/// Results of the sample reader engine; 1 is success.
#pragma once

#include <cstdint>

namespace trnmpa {

inline constexpr std::int32_t kSuccess = 1;
/// An exception was caught while the decoder was created or used, or a request is too large.
inline constexpr std::int32_t kUnexpectedException = -128;
inline constexpr std::int32_t kNoPcmBuffer = -2320;
inline constexpr std::int32_t kNoFrameBufferReader = -2321;
inline constexpr std::int32_t kNoDecoder = -2322;
/// The tag or the first frame could not be made out.
inline constexpr std::int32_t kAnalysisFailed = -2323;
/// The open without index raised an exception, or the record to fill is null.
inline constexpr std::int32_t kOpenFailed = -2325;
/// A negative start or a zero count.
inline constexpr std::int32_t kBadRequest = -2326;
inline constexpr std::int32_t kDecodeFailed = -2329;
/// The media file could not be opened, or the decoder selector is neither 0 nor 1.
inline constexpr std::int32_t kMediaNotOpened = -2331;
inline constexpr std::int32_t kNotOpen = -2333;

} // namespace trnmpa
