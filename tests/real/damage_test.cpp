/// Real files with foreign bytes in them, cut short, or no files at all.

#include "real/delivery.h"
#include "real/real_streams.h"
#include "support/loaded_module.h"
#include "support/test_files.h"

#include "os/paths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <span>
#include <string>

namespace {

namespace fs = std::filesystem;
using namespace test;

constexpr std::uint32_t kAllWays[] = {TRN_OPEN_PROBE, TRN_OPEN_SAMPLE_READER,
                                      TRN_OPEN_PROBE | TRN_OPEN_SAMPLE_READER};

class RealDamage : public testing::TestWithParam<const char*> {
protected:
    LoadedModule module_;
    ScratchFolder scratch_;

    const RealStream& Stream() const { return RealStreamNamed(GetParam()); }

    /// Where the frame of that number begins, by the independent index; 0 is the second frame of the file.
    std::size_t OffsetOfEntry(std::size_t number) const {
        const Bytes index = ReadFile(Stream().IndexPath());
        std::size_t offset = 0;
        for (int byte = 3; byte >= 0; --byte)
            offset = offset << 8 | index.at(28 + 8 * number + static_cast<std::size_t>(byte));
        return offset;
    }

    Pcm Deliver(const Bytes& file, std::int64_t samples) {
        const auto reader = module_.OpenForReading(scratch_.Add("file.mp3", file));
        EXPECT_NE(reader, nullptr);
        return reader != nullptr ? ReadThrough(*reader, samples, 10'000) : Pcm();
    }
};

TEST_P(RealDamage, GarbageBeforeTheFirstFrame) {
    const Bytes clean = ReadFile(Stream().Path());
    const Pcm pcm = Deliver(clean, Stream().DeliveredSamples());
    Bytes little(1000, 0x55);
    little.insert(little.end(), clean.begin(), clean.end());
    EXPECT_EQ(Deliver(little, Stream().DeliveredSamples()), pcm);

    Bytes much(5000, 0x55);
    much.insert(much.end(), clean.begin(), clean.end());
    const fs::path path = scratch_.Add("much.mp3", much);
    for (const std::uint32_t flags : kAllWays)
        EXPECT_EQ(module_.CreateReader()->OpenFile(Wide(path), flags), 0) << "flags " << flags;
}

TEST_P(RealDamage, GarbageBetweenFramesIsPassedOver) {
    const Bytes clean = ReadFile(Stream().Path());
    Bytes dirty = clean;
    for (const std::size_t entry : {200u, 40u, 3u}) {
        const auto at = dirty.begin() + static_cast<std::ptrdiff_t>(OffsetOfEntry(entry));
        dirty.insert(at, 50 + entry, 0x55);
    }
    const std::int64_t samples = Stream().DeliveredSamples();
    EXPECT_EQ(Deliver(dirty, samples), Deliver(clean, samples));
}

TEST_P(RealDamage, TruncatedLastFrameIsSilence) {
    const Bytes clean = ReadFile(Stream().Path());
    const std::int64_t samples = Stream().DeliveredSamples() - Stream().SamplesPerFrame();
    const Pcm pcm = Deliver(clean, samples);
    for (const std::size_t missing : {1u, 30u, 60u}) {
        SCOPED_TRACE(missing);
        const Bytes cut(clean.begin(), clean.end() - static_cast<std::ptrdiff_t>(missing));
        EXPECT_EQ(Deliver(cut, samples), pcm);
        const auto reader = module_.OpenForReading(scratch_.Add("cut.mp3", cut));
        ASSERT_NE(reader, nullptr);
        EXPECT_EQ(ReadPcm(*reader, samples, 1), Pcm(static_cast<std::size_t>(Stream().channels), 0));
        EXPECT_EQ(ReadPcm(*reader, samples - 100, 100),
                  ExpectedAnswer(pcm, Stream().channels, samples - 100, 100));
    }
}

TEST_P(RealDamage, EveryShortPrefixIsAnsweredWithoutHarm) {
    const Bytes clean = ReadFile(Stream().Path());
    for (std::size_t size = 0; size < 3000; size += size < 64 ? 1 : 61) {
        SCOPED_TRACE(size);
        const fs::path path =
            scratch_.Add("prefix.mp3", Bytes(clean.begin(), clean.begin() + static_cast<int>(size)));
        const auto reader = module_.CreateReader();
        for (const std::uint32_t flags : kAllWays) {
            const std::int32_t result = reader->OpenFile(Wide(path), flags);
            EXPECT_TRUE(result >= 0 && result <= 2) << result;
        }
        if (const auto opened = module_.OpenForReading(path)) {
            const auto answer = ReadPcm(*opened, 0, 1'000'000);
            EXPECT_EQ(answer, Pcm(static_cast<std::size_t>(1'000'000 * Stream().channels), 0));
        }
    }
}

std::string TestName(const testing::TestParamInfo<const char*>& file) {
    std::string name = fs::path(file.param).stem().string();
    std::ranges::replace(name, '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Files, RealDamage,
                         testing::Values("cbr-44-160.mp3", "mono-44-64.mp3", "low-22-64.mp3",
                                         "l2-44-192.mp2"),
                         TestName);

class NoFile : public testing::Test {
protected:
    LoadedModule module_;
    ScratchFolder scratch_;

    void ExpectRefused(const fs::path& path) {
        for (const std::uint32_t flags : kAllWays)
            EXPECT_EQ(module_.CreateReader()->OpenFile(Wide(path), flags), 0) << "flags " << flags;
    }
};

TEST_F(NoFile, Missing) {
    ExpectRefused(scratch_.Path() / "missing.mp3");
}

TEST_F(NoFile, Empty) {
    ExpectRefused(scratch_.Add("empty.mp3", Bytes()));
}

TEST_F(NoFile, OneByte) {
    ExpectRefused(scratch_.Add("one.mp3", Bytes{0xFF}));
}

TEST_F(NoFile, Directory) {
    const fs::path path = scratch_.Path() / "folder.mp3";
    fs::create_directory(path);
    ExpectRefused(path);
}

TEST_F(NoFile, WithoutPermission) {
    const fs::path path = scratch_.Add("secret.mp3", ReadFile(RealStreamNamed("cbr-44-160.mp3").Path()));
    fs::permissions(path, fs::perms::none);
    if (os::IsReadable(Wide(path)))
        GTEST_SKIP() << "this user reads files without permission";
    ExpectRefused(path);
}

// At the lower sampling frequencies the analysis measures Layer II frames at half their length, on purpose:
// where it looks for the next header there is none. What it finds instead, if anything, lies inside a frame.
TEST(LowRateLayer2, IsNotDescribedWithoutAnIndexAndReadWithOne) {
    LoadedModule module;
    const ScratchFolder scratch;
    for (const char* file : {"l2-22-64.mp2", "l2-24-80-joint.mp2", "l2-16-32-mono.mp2"}) {
        SCOPED_TRACE(file);
        const RealStream& stream = RealStreamNamed(file);
        EXPECT_NE(module.CreateReader()->OpenFile(Wide(stream.Path()), TRN_OPEN_PROBE), 1);

        const fs::path path = scratch.Add(stream.file, ReadFile(stream.Path()));
        BuildIndexBeside(module, path);
        const auto reader = module.OpenForReading(path);
        ASSERT_NE(reader, nullptr);
        const Pcm reference = stream.Reference();
        const Pcm delivered = ReadThrough(*reader, stream.SamplesWithIndex(), 5000);
        const std::ptrdiff_t frame = stream.ValuesPerFrame();
        ASSERT_EQ(delivered.size(), reference.size() - static_cast<std::size_t>(frame));
        // The filterbank lacks the frame before.
        const Pcm laterReference(reference.begin() + 2 * frame, reference.end());
        const PcmDistance distance =
            Distance(laterReference, std::span(delivered).subspan(static_cast<std::size_t>(frame)));
        EXPECT_LE(distance.largest, 1);
        EXPECT_LT(distance.rms, 0.8);
    }
}

} // namespace
