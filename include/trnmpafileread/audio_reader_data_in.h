/// The read request that the sample readers take.
#pragma once

#include <cstdint>
#include <string>

/// A request for a run of samples. A sample is one sample per channel.
///
/// The module reads `startSample` and `sampleCount`; it carries every other field unchanged. The record
/// crosses the module boundary by value, so host and module must share one C++ runtime ABI.
struct AudioReaderDataIn {
    std::int64_t position = -1; ///< the host's; ignored
    /// First sample to deliver, counted per channel from the start of the stream; 0 or more.
    std::int64_t startSample = 0;
    /// Samples to deliver, per channel; greater than 0.
    std::uint32_t sampleCount = 0;
    std::wstring name;                                     ///< the host's; ignored
    std::int32_t hostFields[7] = {1, 2049, 0, 1, 0, 0, 0}; ///< the host's; ignored
};
