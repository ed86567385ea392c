/// An index that exists but cannot be opened.
#include "reader/engine.h"
#include "reader/reader_streams.h"

#include <gtest/gtest.h>

#include <windows.h>

TEST(UnopenableIndex, FailsTheInputFile) {
    const test::ScratchFolder folder;
    const auto stream = test::SteadyStream(3);
    const auto path = folder.Add("stream.mp3", stream.bytes);
    const auto index = folder.Add("stream.mp3.idx", test::IndexOf(stream).ToBytes());
    const HANDLE writer = CreateFileW(test::Wide(index).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(writer, INVALID_HANDLE_VALUE);
    test::Engine engine;
    ASSERT_EQ(engine->Initialize(), trnmpa::kSuccess);
    EXPECT_EQ(engine->SetInputFile(test::Wide(path)), 0);
    CloseHandle(writer);
    EXPECT_EQ(engine.Open(path), trnmpa::kSuccess);
}
