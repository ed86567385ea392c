/// Readers at work while another thread rewrites the settings file. This program is alone in its folder.

#include "reader/reader_streams.h"
#include "reader/settings_file.h"
#include "reader/slice_reader.h"
#include "support/loaded_module.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <random>
#include <thread>

namespace {

using namespace test;
using Reader = std::unique_ptr<PLUGIN_FILE_READER_CLASS>;

/// Writes one text after another, over and over, as long as it lives.
class Rewriting {
public:
    Rewriting(const SettingsFile& file, std::vector<std::string> texts)
        : thread_([this, &file, texts] {
              for (std::size_t i = 0; !stop_; ++i) {
                  try {
                      file.Write(texts[i % texts.size()]);
                      ++written_;
                  } catch (const std::exception&) {
                      // Some systems refuse while the file is being read.
                  }
              }
          }) {
        while (written_ == 0)
            std::this_thread::yield();
    }
    ~Rewriting() {
        stop_ = true;
        thread_.join();
        EXPECT_GT(written_, kFewChanges);
    }
    /// Asks before each round: at least `rounds`, and more while there was hardly any change.
    bool WantsRound(int round, int rounds) const { return round < rounds || written_ <= kFewChanges; }

    Rewriting(const Rewriting&) = delete;
    Rewriting& operator=(const Rewriting&) = delete;

private:
    static constexpr int kFewChanges = 10;

    std::atomic<bool> stop_ = false;
    std::atomic<int> written_ = 0;
    std::thread thread_;
};

const std::vector<std::string> kAnyTexts = {"[CODEC]\nMP3DecoderUse=1\n",
                                            "[CODEC]\nMP3DecoderUse=2\n",
                                            "",
                                            "[CODEC]\nMP3DecoderUse=0\n",
                                            "[READSIZE]\nReadMp3BufSize=1\n[CODEC]\nMP3DecoderUse=1\n",
                                            "no settings at all"};

/// The built-in decoder under all of them, with other block sizes.
const std::vector<std::string> kBlockSizes = {
    "[READSIZE]\nReadMp3BufSize=1\n", "[READSIZE]\nReadMp3BufSize=4096\n", "",
    "[READSIZE]\nReadMp3BufSize=-7\n", "[CODEC]\nMP3DecoderUse=0\n[READSIZE]\nReadMp3BufSize=3\n"};

class SettingsChange : public testing::Test {
protected:
    Reader Open() {
        Reader reader = module_.OpenForReading(path_);
        EXPECT_NE(reader, nullptr);
        return reader;
    }

    /// The start of the stream, in order and with jumps between.
    static Pcm ReadAbout(PLUGIN_FILE_READER_CLASS& reader, unsigned seed) {
        std::mt19937 random(seed);
        Pcm pcm;
        for (int i = 0; i < 30; ++i) {
            const auto part = ReadPcm(reader, static_cast<std::int64_t>(random() % 30'000), 700);
            if (!part)
                return {};
            pcm.insert(pcm.end(), part->begin(), part->end());
        }
        return pcm;
    }

    const SettingsFile settings_;
    const ScratchFolder folder_;
    const bitstream::Stream stream_ = SteadyStream(40);
    const std::filesystem::path path_ = folder_.Add("song.mp3", stream_.bytes);
    LoadedModule module_;
};

TEST_F(SettingsChange, AReaderAtWorkKeepsItsDecoder) {
    settings_.SelectDecoder("0");
    const Reader builtIn = Open();
    const Pcm expected = ReadAbout(*builtIn, 1);
    ASSERT_FALSE(expected.empty());
    Reader external;
    Pcm expectedExternal;
    if (TRN_HAS_EXTERNAL_DECODER) {
        settings_.SelectDecoder("1");
        external = Open();
        expectedExternal = ReadAbout(*external, 1);
        ASSERT_EQ(expectedExternal.size(), expected.size());
        ASSERT_NE(expectedExternal, expected) << "the same decoder";
    }
    const Rewriting rewriting(settings_, kAnyTexts);
    for (int round = 0; rewriting.WantsRound(round, 15); ++round) {
        ASSERT_TRUE(ReadAbout(*builtIn, 1) == expected) << round;
        if (external != nullptr) {
            ASSERT_TRUE(ReadAbout(*external, 1) == expectedExternal) << round;
        }
        // One more reads the file as it stands; what it opens is not said.
        module_.OpenForReading(path_);
    }
}

TEST_F(SettingsChange, ReadersMadeMeanwhileReadTheSame) {
    const Pcm expected = ReadAbout(*Open(), 2);
    ASSERT_FALSE(expected.empty());
    const Rewriting rewriting(settings_, kBlockSizes);
    for (int round = 0; rewriting.WantsRound(round, 25); ++round) {
        const Reader reader = Open();
        ASSERT_NE(reader, nullptr);
        ASSERT_TRUE(ReadAbout(*reader, 2) == expected) << round;
    }
}

TEST_F(SettingsChange, ReadersOnOtherThreadsReadTheSame) {
    const Pcm expected = ReadAbout(*Open(), 3);
    ASSERT_FALSE(expected.empty());
    const Rewriting rewriting(settings_, kBlockSizes);
    std::atomic<int> good = 0;
    std::atomic<int> read = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 3; ++i)
            threads.emplace_back([&] {
                for (int round = 0; rewriting.WantsRound(round, 6); ++round, ++read) {
                    const Reader reader = module_.OpenForReading(path_);
                    good += reader != nullptr && ReadAbout(*reader, 3) == expected;
                }
            });
    }
    EXPECT_EQ(good, read);
    EXPECT_GE(read, 18);
}

/// Slices have nothing to do with the settings.
TEST_F(SettingsChange, SlicesAreTheSame) {
    const auto readAll = [this] {
        trnmpa::KwMpAudioReader engine;
        EXPECT_EQ(engine.Initialize(), 1);
        EXPECT_EQ(engine.SetInputFile(Wide(path_)), 1);
        EXPECT_EQ(engine.StartRead(), 1);
        Bytes bytes;
        trnmpa::PcmSlice slice;
        while (engine.ReadFrame(slice) == 1)
            bytes.insert(bytes.end(), slice.data, slice.data + slice.length);
        return bytes;
    };
    const Bytes expected = readAll();
    ASSERT_GT(expected.size(), 100'000u);
    const Rewriting rewriting(settings_, kAnyTexts);
    for (int round = 0; rewriting.WantsRound(round, 10); ++round)
        ASSERT_TRUE(readAll() == expected) << round;
}

} // namespace
