/// Indexes of several files, some of them at a time.
#pragma once

#include "mpatool/index/index_build.h"
#include "mpatool/index/index_progress.h"
#include "mpatool/module/module_host.h"

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace mpatool {

struct IndexJob {
    std::vector<std::wstring> files;
    bool replace = false;
    int threads = 1;
};

/// Builds them all, draws the progress and calls `report` on this thread as soon as one has ended. When the
/// user wants the run to end, throws Interrupted after the last one has.
void BuildIndexes(ModuleHost& host, const IndexJob& job,
                  const std::function<void(const IndexOutcome&)>& report);

/// The threads behind it.
class IndexPool {
public:
    /// Starts to build.
    IndexPool(ModuleHost& host, const IndexJob& job);
    /// Cancels what has not ended.
    ~IndexPool();
    IndexPool(const IndexPool&) = delete;
    IndexPool& operator=(const IndexPool&) = delete;

    /// Waits a moment for builds to end; gives those that have since the last call.
    std::vector<IndexOutcome> WaitForNews();
    /// Nothing runs any more and all news are out.
    bool IsIdle();

    /// Has the running builds end early and the others not begin. To be repeated until it is idle.
    void Cancel();
    /// Builds that never began.
    std::size_t NotBegun();

    IndexProgress Progress();

private:
    void StartThreads(std::size_t count);
    void Work();
    IndexBuild* TakeNext();
    void NoteEnd(IndexBuild& build, IndexOutcome outcome);

    std::vector<std::unique_ptr<IndexBuild>> builds_;
    std::mutex moduleMutex_; ///< one thread at a time asks the module for a reader

    std::mutex mutex_; ///< guards what follows
    std::condition_variable news_;
    std::size_t next_ = 0;
    bool cancelled_ = false;
    std::size_t workers_ = 0; ///< threads that have not ended
    std::vector<IndexBuild*> running_;
    std::vector<IndexOutcome> outcomes_;
    IndexProgress ended_; ///< what the ended builds contribute

    std::vector<std::jthread> threads_;
};

} // namespace mpatool
