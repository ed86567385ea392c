/// Eight readers on as many threads, with opens and closes, a settings file that changes and an index that is
/// built at the same time: each brings what it brings alone. This program is alone in its folder.
#include "plugin/module_log.h"
#include "reader/engine.h"
#include "reader/reader_streams.h"
#include "reader/settings_file.h"
#include "support/digest.h"
#include "support/loaded_module.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace test;
namespace fs = std::filesystem;
using Reader = std::unique_ptr<PLUGIN_FILE_READER_CLASS>;

constexpr int kThreads = 8;
constexpr int kRounds = 4;

/// Reads in order and with jumps; a digest of all.
std::string ReadAbout(PLUGIN_FILE_READER_CLASS& reader, int seed) {
    Pcm all;
    for (int i = 0; i < 6; ++i) {
        const std::int64_t start = (seed * 7919 + i * 5003) % 20'000;
        for (const std::int64_t at : {start, start + 700}) {
            const auto pcm = ReadPcm(reader, at, 700);
            if (!pcm)
                return "a read failed";
            all.insert(all.end(), pcm->begin(), pcm->end());
        }
    }
    return Digest(all);
}

/// Runs until the end of its life.
class Background {
public:
    explicit Background(std::function<void(int)> round)
        : thread_([this, round] {
              for (int i = 0; !stop_; ++i, ++rounds_)
                  round(i);
          }) {}
    ~Background() {
        stop_ = true;
        thread_.join();
    }
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    /// Waits until it has done some rounds.
    void Await(int rounds) const {
        while (rounds_ < rounds)
            std::this_thread::yield();
    }

private:
    std::atomic<bool> stop_ = false;
    std::atomic<int> rounds_ = 0;
    std::thread thread_;
};

class ModuleThreads : public testing::Test {
protected:
    /// What `work` gives on each of the threads, all begun at once.
    static std::vector<std::string> OnThreads(const std::function<std::string(int)>& work) {
        std::vector<std::string> results(kThreads);
        std::barrier start(kThreads);
        std::vector<std::jthread> threads;
        for (int i = 0; i < kThreads; ++i)
            threads.emplace_back([&, i] {
                start.arrive_and_wait();
                results[static_cast<std::size_t>(i)] = work(i);
            });
        threads.clear();
        return results;
    }

    Reader Open(const fs::path& path) { return module_.OpenForReading(path); }

    /// The same work on one thread after the other.
    static std::vector<std::string> Alone(const std::function<std::string(int)>& work) {
        std::vector<std::string> results;
        for (int i = 0; i < kThreads; ++i)
            results.push_back(work(i));
        return results;
    }

    void ChangeSettings(int round) {
        const char* kTexts[] = {"[READSIZE]\nReadMp3BufSize=1\n", "", "[READSIZE]\nReadMp3BufSize=512\n",
                                "[CODEC]\nMP3DecoderUse=0\n[READSIZE]\nReadMp3BufSize=3\n"};
        try {
            settings_.Write(kTexts[round % 4]);
        } catch (const std::exception&) {
            // Some systems refuse while the file is being read.
        }
    }

    void BuildIndex(const fs::path& path) {
        const Reader builder = module_.CreateReader();
        EXPECT_EQ(builder->OpenFile(Wide(path), TRN_OPEN_INDEX_BUILDER), 1);
        EXPECT_EQ(builder->CreateFileIndex(), 1);
    }

    const SettingsFile settings_;
    const ScratchFolder folder_;
    const bitstream::Stream stream_ = SteadyStream(30);
    const fs::path one_ = folder_.Add("one.mp3", stream_.bytes);
    LoadedModule module_;
};

TEST_F(ModuleThreads, OneFileOpenedAndClosedAgainAndAgain) {
    const auto work = [&](int i) {
        std::string all;
        for (int round = 0; round < kRounds; ++round) {
            const Reader reader = Open(one_);
            all += reader != nullptr ? ReadAbout(*reader, i + round) : "no reader";
        }
        return all;
    };
    const std::vector<std::string> alone = Alone(work);
    const Background settings([this](int round) { ChangeSettings(round); });
    settings.Await(2);
    EXPECT_EQ(OnThreads(work), alone);
}

TEST_F(ModuleThreads, ManyFilesWhileAnIndexOfAnotherIsBuilt) {
    std::vector<fs::path> files;
    for (int i = 0; i < kThreads; ++i) {
        const bool isLayer2 = i % 3 == 2;
        const auto bytes =
            isLayer2 ? Layer2Stream(30).bytes : (i % 2 == 0 ? ChangingStream(30) : stream_).bytes;
        files.push_back(folder_.Add("song" + std::to_string(i) + (isLayer2 ? ".mp2" : ".mp3"), bytes));
    }
    const auto work = [&](int i) {
        std::string all;
        for (int round = 0; round < kRounds; ++round) {
            const Reader reader = Open(files[static_cast<std::size_t>(i)]);
            all += reader != nullptr ? ReadAbout(*reader, round) : "no reader";
        }
        return all;
    };
    const std::vector<std::string> alone = Alone(work);
    {
        const Background builder([this](int) { BuildIndex(one_); });
        const Background settings([this](int round) { ChangeSettings(round); });
        builder.Await(1);
        EXPECT_EQ(OnThreads(work), alone);
    }
    EXPECT_EQ(ReadFile(folder_.Path() / "one.mp3.idx"), IndexOf(stream_).ToBytes());
}

TEST_F(ModuleThreads, ReadersOpenedBeforeTheIndexOfTheirFileKeepTheirPositions) {
    std::vector<Reader> readers;
    for (int i = 0; i < kThreads; ++i)
        readers.push_back(Open(one_));
    const auto work = [&](int i) {
        std::string all;
        for (int round = 0; round < kRounds; ++round)
            all += ReadAbout(*readers[static_cast<std::size_t>(i)], i + round);
        return all;
    };
    const std::vector<std::string> alone = Alone(work);
    const Background builder([this](int) { BuildIndex(one_); });
    builder.Await(1);
    EXPECT_EQ(OnThreads(work), alone);
}

/// The log lives from the first engine to the last, whichever threads they are made and destroyed on.
TEST_F(ModuleThreads, TheLogLivesAsLongAsAnEngine) {
    ASSERT_FALSE(trnmpa::LogExists());
    const auto work = [&](int) {
        bool isThere = true;
        for (int round = 0; round < 20; ++round) {
            const trnmpa::KwMpAudioReader2 engine;
            isThere &= trnmpa::LogExists();
        }
        return std::string(isThere ? "there" : "gone");
    };
    EXPECT_EQ(OnThreads(work), std::vector<std::string>(kThreads, "there"));
    EXPECT_FALSE(trnmpa::LogExists());
    {
        const trnmpa::KwMpAudioReader2 engine;
        EXPECT_EQ(OnThreads(work), std::vector<std::string>(kThreads, "there"));
        EXPECT_TRUE(trnmpa::LogExists()) << "one is still there";
    }
    EXPECT_FALSE(trnmpa::LogExists());
}

} // namespace
