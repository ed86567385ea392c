/// An index that exists but cannot be opened.
#include "reader/engine.h"
#include "reader/reader_streams.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

TEST(UnopenableIndex, FailsTheInputFile) {
    const test::ScratchFolder folder;
    const auto path = folder.Add("stream.mp3", test::SteadyStream(3).bytes);
    ASSERT_EQ(::mkfifo((folder.Path() / "stream.mp3.idx").c_str(), 0600), 0);
    test::Engine engine;
    ASSERT_EQ(engine->Initialize(), trnmpa::kSuccess);
    EXPECT_EQ(engine->SetInputFile(test::Wide(path)), 0);
}
