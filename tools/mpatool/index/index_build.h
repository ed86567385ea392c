/// One index, from the questions beforehand to its name.
#pragma once

#include "mpatool/index/unfinished_index.h"
#include "mpatool/module/module_host.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

namespace mpatool {

/// How a build ended.
struct IndexOutcome {
    enum class End { kDone, kFailed, kCancelled };

    std::wstring file;
    End end = End::kFailed;
    std::uint32_t frames = 0; ///< listed by a finished index
    std::string message;      ///< the file, the reason and what is left; of a finished one what was left over
};

/// Builds the index of one media file through the module. Run belongs to one thread, the others may be called
/// from any.
class IndexBuild {
public:
    using MakeReader = std::function<ModuleReader(const std::wstring& file)>;

    /// `makeReader` is called on Run's thread.
    IndexBuild(std::wstring file, bool replace, MakeReader makeReader);

    /// Once. Throws nothing.
    IndexOutcome Run();

    /// Has Run end early. A request that comes before the module's scan is lost to the module: to be
    /// repeated until Run has ended.
    void Cancel();

    struct Progress {
        std::int64_t bytes = 0; ///< of the media file
        std::uint32_t frames = 0;
    };
    Progress Poll();

    /// What the media file adds to the run's bytes, as it was when the build was announced.
    std::int64_t BytesToIndex() const { return bytesToIndex_; }

private:
    IndexOutcome Build();
    PLUGIN_INDEX_PROGRESS RunModule(const UnfinishedIndex& place);
    void Show(ModuleReader* reader, const std::wstring& index);
    IndexOutcome Ended(IndexOutcome::End end, const std::string& message) const;

    const std::wstring file_;
    const bool replace_;
    const MakeReader makeReader_;
    const std::int64_t bytesToIndex_;
    std::atomic<bool> cancelled_ = false;

    std::mutex mutex_;               ///< guards what follows
    ModuleReader* reader_ = nullptr; ///< only while the module builds
    std::wstring unfinishedIndex_;
};

} // namespace mpatool
