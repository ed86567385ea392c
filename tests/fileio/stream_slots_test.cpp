/// The order of the virtual operations.
#include "fileio/buffered_file_stream.h"
#include "fileio/file_stream.h"

#include "platform/path_samples.h"
#include "support/test_files.h"
#include "support/virtual_table.h"

#include <gtest/gtest.h>

#if !defined(_MSC_VER)

namespace {

using test::Slot;
using trnmpa::kStreamReadWrite;

using Users = unsigned long (*)(void*);
using Open = std::int32_t (*)(void*, const std::wstring&, std::uint32_t);
using Close = std::int32_t (*)(void*);
using Read = std::uint32_t (*)(void*, void*, std::uint32_t);
using Write = std::uint32_t (*)(void*, const void*, std::uint32_t);
using Seek = std::int64_t (*)(void*, std::int64_t, std::uint32_t);
using Place = std::int64_t (*)(void*);
using DestroyAndFree = void (*)(void*);

void CheckSlots(void* stream) {
    const test::ScratchFolder scratch;
    const test::Bytes content = test::NumberedBytes(20);
    const std::wstring path = test::Wide(scratch.Add("a.mp3", content));
    test::Bytes bytes(5);
    EXPECT_EQ(Slot<Users>(stream, 0)(stream), 1u);
    EXPECT_EQ(Slot<Users>(stream, 0)(stream), 2u);
    EXPECT_EQ(Slot<Users>(stream, 1)(stream), 2u);
    EXPECT_EQ(Slot<Users>(stream, 2)(stream), 1u);
    EXPECT_EQ(Slot<Open>(stream, 3)(stream, path, kStreamReadWrite), 1);
    EXPECT_EQ(Slot<Read>(stream, 5)(stream, bytes.data(), 5), 5u);
    EXPECT_EQ(bytes, test::Bytes(content.begin(), content.begin() + 5));
    EXPECT_EQ(Slot<Write>(stream, 6)(stream, content.data(), 2), 2u);
    EXPECT_EQ(Slot<Seek>(stream, 7)(stream, 3, trnmpa::kSeekFromPosition), 10);
    EXPECT_EQ(Slot<Place>(stream, 8)(stream), 20);
    EXPECT_EQ(Slot<Place>(stream, 9)(stream), 10);
    EXPECT_EQ(Slot<Close>(stream, 4)(stream), 1);
    EXPECT_EQ(Slot<Close>(stream, 4)(stream), 0);
    Slot<DestroyAndFree>(stream, 11)(stream);
}

TEST(StreamSlots, OfTheUnbufferedStream) {
    CheckSlots(new trnmpa::CFileStream);
}

TEST(StreamSlots, OfTheBufferedStream) {
    trnmpa::CFileStream inner;
    CheckSlots(new trnmpa::CBufferedFileStream(&inner, 8));
}

} // namespace

#endif
