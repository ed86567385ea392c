#include "mpatool/index/index_pool.h"

#include "mpatool/output/count_text.h"
#include "mpatool/output/text_output.h"
#include "mpatool/output/tool_error.h"
#include "os/console.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <system_error>
#include <utility>

namespace mpatool {

namespace {

constexpr auto kPollInterval = std::chrono::milliseconds(50);

} // namespace

IndexPool::IndexPool(ModuleHost& host, const IndexJob& job) {
    const auto makeReader = [this, &host](const std::wstring& file) {
        const std::lock_guard lock(moduleMutex_);
        return host.CreateReader(file);
    };
    for (const std::wstring& file : job.files) {
        builds_.push_back(std::make_unique<IndexBuild>(file, job.replace, makeReader));
        ended_.totalBytes += builds_.back()->BytesToIndex();
    }
    ended_.totalFiles = builds_.size();
    StartThreads(std::min(static_cast<std::size_t>(job.threads), builds_.size()));
}

void IndexPool::StartThreads(std::size_t count) {
    threads_.reserve(count);
    const std::lock_guard lock(mutex_);
    try {
        for (; workers_ < count; ++workers_)
            threads_.emplace_back([this] { Work(); });
    } catch (const std::system_error&) {
        // The system has no more threads; fewer do the same.
        if (workers_ == 0)
            throw;
    }
}

IndexPool::~IndexPool() {
    while (!IsIdle()) {
        Cancel();
        WaitForNews();
    }
}

void IndexPool::Work() {
    while (IndexBuild* build = TakeNext())
        NoteEnd(*build, build->Run());
    const std::lock_guard lock(mutex_);
    --workers_;
    news_.notify_one();
}

IndexBuild* IndexPool::TakeNext() {
    const std::lock_guard lock(mutex_);
    if (cancelled_ || next_ == builds_.size())
        return nullptr;
    return running_.emplace_back(builds_[next_++].get());
}

void IndexPool::NoteEnd(IndexBuild& build, IndexOutcome outcome) {
    const std::lock_guard lock(mutex_);
    std::erase(running_, &build);
    ended_.doneBytes += build.BytesToIndex();
    ended_.frames += outcome.frames;
    ++ended_.doneFiles;
    outcomes_.push_back(std::move(outcome));
    news_.notify_one();
}

std::vector<IndexOutcome> IndexPool::WaitForNews() {
    std::unique_lock lock(mutex_);
    news_.wait_for(lock, kPollInterval, [this] { return !outcomes_.empty() || workers_ == 0; });
    return std::exchange(outcomes_, {});
}

bool IndexPool::IsIdle() {
    const std::lock_guard lock(mutex_);
    return workers_ == 0 && outcomes_.empty();
}

void IndexPool::Cancel() {
    // Without the lock while the builds stop: they need it to end.
    std::vector<IndexBuild*> running;
    {
        const std::lock_guard lock(mutex_);
        cancelled_ = true;
        running = running_;
    }
    for (IndexBuild* build : running)
        build->Cancel();
}

std::size_t IndexPool::NotBegun() {
    const std::lock_guard lock(mutex_);
    return builds_.size() - next_;
}

IndexProgress IndexPool::Progress() {
    const std::lock_guard lock(mutex_);
    IndexProgress progress = ended_;
    for (IndexBuild* build : running_) {
        const IndexBuild::Progress part = build->Poll();
        progress.doneBytes += part.bytes;
        progress.frames += part.frames;
    }
    return progress;
}

void BuildIndexes(ModuleHost& host, const IndexJob& job,
                  const std::function<void(const IndexOutcome&)>& report) {
    IndexPool pool(host, job);
    IndexProgressBar bar;
    bool cancelledSome = false;
    std::exception_ptr failedReport;
    while (!pool.IsIdle()) {
        if (os::InterruptRequested())
            pool.Cancel();
        for (const IndexOutcome& outcome : pool.WaitForNews()) {
            bar.Clear();
            cancelledSome = cancelledSome || outcome.end == IndexOutcome::End::kCancelled;
            try {
                report(outcome);
            } catch (...) {
                // What the other files came to is still to be told.
                failedReport = std::current_exception();
                pool.Cancel();
            }
        }
        if (bar.IsDue())
            bar.Draw(pool.Progress());
    }
    bar.Clear();
    if (pool.NotBegun() > 0)
        PrintError(CountOf(static_cast<std::int64_t>(pool.NotBegun()), "file") + " not begun");
    if (failedReport != nullptr)
        std::rethrow_exception(failedReport);
    if (cancelledSome || pool.NotBegun() > 0)
        throw Interrupted();
}

} // namespace mpatool
