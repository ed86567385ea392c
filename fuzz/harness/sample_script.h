/// The sample reader engine driven by an input.
#pragma once

#include "harness/media.h"

#include "reader/sample_reader.h"

namespace fuzz {

/// Sample counts up to a few seconds, and those whose PCM would have 2 GiB and more.
std::uint32_t TakeSampleCount(Input& script);
/// Positions near the start, in a short file, and anywhere.
std::int64_t TakeSamplePosition(Input& script);

/// False for PCM that is large and yet small enough to be delivered: wide samples, as an index may claim
/// them, make a small count such a request, which costs much time and tells little.
bool IsWorthARead(std::size_t pcmBytes);

/// One engine and what may be done with it.
class SampleScript {
public:
    explicit SampleScript(Media& media) : media_(media) {}

    /// Initialize, SetInputFile, GetStreamInfo.
    void Open();
    void Read(std::int64_t start, std::uint32_t count);
    /// Takes one operation from the script, and carries it out.
    void Step(Input& script);

private:
    void GetInfo(bool wantsRecord);

    Media& media_;
    trnmpa::KwMpAudioReader2 reader_;
    KW_MEDIA_BASE_INFO_ST info_;
    std::int64_t next_ = 0;
};

} // namespace fuzz
