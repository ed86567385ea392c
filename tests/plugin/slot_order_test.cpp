/// The order of the virtual operations, called by slot number as a host compiled separately calls them.
#include "reader/reader_streams.h"
#include "support/loaded_module.h"
#include "support/virtual_table.h"

#include "trnmediadet/media_info.h"

#include <gtest/gtest.h>

#include <cstring>

#if !defined(_MSC_VER)

namespace {

using test::Slot;

/// A copy that the callee takes by value is passed by its address.
using Path = std::wstring;
using NoArguments = std::int32_t (*)(void*);
using DestroyAndFree = void (*)(void*);

class SlotOrder : public testing::Test {
protected:
    void* NewModule() { return loaded_.Library().FunctionNamed<void* (*)()>("GetPluginReadModule")(); }

    test::LoadedModule loaded_;
    test::ScratchFolder folder_;
    const test::bitstream::Stream stream_ = test::SteadyStream();
    const std::wstring path_ = test::Wide(folder_.Add("song.mp3", stream_.bytes));
};

} // namespace

TEST_F(SlotOrder, OfTheModule) {
    void* const module = NewModule();
    ASSERT_NE(module, nullptr);
    unsigned char record[132] = {};
    EXPECT_EQ(Slot<std::int32_t (*)(void*, void*)>(module, 2)(module, record), 1);
    EXPECT_EQ(std::memcmp(record, "1000MPA Plugin Reader Module", 29), 0);
    std::int32_t identifier = 0;
    EXPECT_EQ(Slot<std::int32_t (*)(void*, Path, std::int32_t*)>(module, 3)(module, L"x.s48", &identifier),
              1);
    EXPECT_EQ(identifier, 2322);
    EXPECT_EQ(Slot<NoArguments>(module, 4)(module), 0);
    void* reader = nullptr;
    EXPECT_EQ(Slot<std::int32_t (*)(void*, std::int32_t, void**)>(module, 5)(module, 2323, &reader), 1);
    ASSERT_NE(reader, nullptr);
    Slot<DestroyAndFree>(reader, 1)(reader);
    EXPECT_EQ(Slot<NoArguments>(module, 6)(module), 1);
    Slot<DestroyAndFree>(module, 1)(module);
}

TEST_F(SlotOrder, OfTheReader) {
    void* const reader = loaded_.CreateReader().release();
    unsigned char record[64] = {};
    EXPECT_EQ(Slot<std::int32_t (*)(void*, void*)>(reader, 2)(reader, record), 1);
    EXPECT_EQ(std::memcmp(record, "MPA  Plugin File Reader", 24), 0);
    EXPECT_EQ(Slot<std::int32_t (*)(void*, Path, std::uint32_t)>(reader, 3)(reader, path_, 2 | 4), 1);
    EXPECT_EQ(Slot<NoArguments>(reader, 4)(reader), 0);
    EXPECT_EQ(Slot<std::int32_t (*)(void*, std::int32_t, void*)>(reader, 5)(reader, 1, record), 0);
    EXPECT_EQ(Slot<NoArguments>(reader, 6)(reader), 0);
    const auto indexed = folder_.Add("indexed.mp3", stream_.bytes);
    EXPECT_EQ(Slot<std::int32_t (*)(void*, Path, std::uint32_t)>(reader, 3)(reader, test::Wide(indexed), 1),
              1);
    EXPECT_EQ(Slot<NoArguments>(reader, 4)(reader), 1);
    EXPECT_EQ(Slot<std::int32_t (*)(void*, std::int32_t, void*)>(reader, 5)(reader, 1, record), 1);
    EXPECT_EQ(record[0], 100);
    EXPECT_EQ(record[32], 1);
    EXPECT_EQ(Slot<NoArguments>(reader, 6)(reader), 1);
    const auto getFileInfo = Slot<std::int32_t (*)(void*, std::int32_t, void*)>(reader, 7);
    TRN_MEDIA_INFO2 probed;
    EXPECT_EQ(getFileInfo(reader, 1, &probed), 1);
    EXPECT_EQ(probed.classIdentifier, 2323);
    KW_MEDIA_BASE_INFO_ST read;
    EXPECT_EQ(getFileInfo(reader, 4, &read), 1);
    EXPECT_EQ(read.audioFormat.nSamplesPerSec, 44100u);
    EXPECT_EQ(Slot<NoArguments>(reader, 8)(reader), 0);
    unsigned char* data = nullptr;
    std::int32_t size = 0;
    const auto readSamples = Slot<std::int32_t (*)(void*, std::uint32_t, std::int64_t, std::uint32_t,
                                                   unsigned char**, std::int32_t*)>(reader, 9);
    EXPECT_EQ(readSamples(reader, 0, 3000, 500, &data, &size), 1);
    const test::Pcm whole = test::DeliveredFrom(stream_, 0, test::kDecoderDelay);
    ASSERT_EQ(size, 2000);
    EXPECT_EQ(std::memcmp(data, whole.data() + 6000, 2000), 0);
    EXPECT_EQ(Slot<NoArguments>(reader, 10)(reader), 0);
    Slot<DestroyAndFree>(reader, 1)(reader);
}

#endif
