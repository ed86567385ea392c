#include "fileio/frame_buffer_reader.h"

#include "support/test_files.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using test::Bytes;
using trnmpa::CMpAudioFrameBufferReader;

TEST(InfoTagKind, FindsTheTextAtItsOffset) {
    const CMpAudioFrameBufferReader source;
    Bytes frame(417, 0);
    std::copy_n("Info", 4, frame.begin() + 36);
    const auto length = static_cast<std::uint32_t>(frame.size());
    EXPECT_EQ(source.InfoTagKind(frame.data(), length), 2);
    EXPECT_EQ(source.InfoTagKind(frame.data(), 40), 2);
}

TEST(InfoTagKind, OtherTextsAndPlacesDoNotCount) {
    const CMpAudioFrameBufferReader source;
    for (const char* text : {"Xing", "info", "INFO", "VBRI", "Inf\0"}) {
        Bytes frame(417, 0);
        std::copy_n(text, 4, frame.begin() + 36);
        EXPECT_EQ(source.InfoTagKind(frame.data(), 417), 1) << text;
    }
    for (const int offset : {13, 21, 35, 37}) {
        Bytes frame(417, 0);
        std::copy_n("Info", 4, frame.begin() + offset);
        EXPECT_EQ(source.InfoTagKind(frame.data(), 417), 1) << offset;
    }
}

TEST(InfoTagKind, ShortFramesAreNotReadBeyondTheirEnd) {
    const CMpAudioFrameBufferReader source;
    for (std::uint32_t length = 0; length < 40; ++length) {
        // Exactly so many bytes, for the sanitizer to see.
        const Bytes frame(length, 'I');
        EXPECT_EQ(source.InfoTagKind(frame.data(), length), 1) << length;
    }
    EXPECT_EQ(source.InfoTagKind(nullptr, 417), 1);
}

} // namespace
