/// The exported slice readers driven by an input.
#pragma once

#include "harness/media.h"

#include "trnmpafileread/frame_readers.h"

namespace fuzz {

/// One reader of slices, one of places, and what may be done with them.
class SliceScript {
public:
    explicit SliceScript(Media& media);

    /// Initialize, SetInputFile, StartRead, of both.
    void Open();
    void Read();
    void Jump(std::uint32_t slice);
    /// Takes one operation from the script, and carries it out.
    void Step(Input& script);

private:
    CComBSTR Path() const { return CComBSTR(media_.Path().c_str()); }
    void SetTime(Input& script);
    void SetFormat(Input& script);
    void Find(std::int64_t time);
    Work SliceWork();
    /// Runs an operation under a watch; it must answer 1.
    template <typename Operation>
    void Success(const char* name, Operation&& operation);
    /// The same; it must answer 0 or 1.
    template <typename Operation>
    void Truth(const char* name, Operation&& operation);

    Media& media_;
    TRN_MpAudioFileReader reader_;
    TRN_MpaFileCompReader places_;
    std::int64_t time_ = 400'000;
    WAVEFORMATEX format_ = {};
};

} // namespace fuzz
