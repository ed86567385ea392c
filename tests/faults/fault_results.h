/// A file, and calls of the module with a fault in them.
#pragma once

#include "faults/fault_layer.h"
#include "faults/module_walk.h"
#include "reader/reader_streams.h"
#include "trnmpafileread/audio_reader.h"

#include <gtest/gtest.h>

#include <optional>
#include <utility>

namespace test {

class FaultResults : public testing::Test {
protected:
    FaultResults() {
        TakeOverCalls();
        MeetFirstException();
    }

    CComBSTR Path() const { return os::ToAutomationString(Wide(media_)); }

    /// Runs one call with the fault in it.
    template <typename Operation>
    static std::int32_t With(std::optional<Fault> fault, Operation&& operation) {
        const FaultLayer layer(fault);
        const FaultLayer::Window window;
        return operation();
    }

    static std::int32_t Read(TRN_MpAudioFileReader2& reader, std::int64_t start, std::uint32_t count) {
        AudioReaderDataIn request;
        request.startSample = start;
        request.sampleCount = count;
        unsigned char* data = nullptr;
        std::int32_t size = 0;
        return reader.GetSamples(std::move(request), &data, size, nullptr);
    }

    static constexpr Fault kFirstOpen = {SystemCall::kOpen, 0, FaultLength::kOnce};
    static constexpr Fault kAllReads = {SystemCall::kRead, 0, FaultLength::kLasts};
    static constexpr Fault kFirstRead = {SystemCall::kRead, 0, FaultLength::kOnce};

    const ScratchFolder folder_;
    const bitstream::Stream stream_ = SteadyStream(40);
    const std::filesystem::path media_ = folder_.Add("song.mp3", stream_.bytes);
    KW_MEDIA_BASE_INFO_ST info_;
};

} // namespace test
