#include "mpatool/index/input_files.h"

#include "mpatool/output/tool_error.h"
#include "os/console.h"
#include "os/folder.h"
#include "os/output_file.h"
#include "os/paths.h"

#include <utility>

namespace mpatool {

namespace {

using FailureReport = std::function<void(const std::wstring&, const std::string&)>;

std::wstring Inside(const std::wstring& folder, const std::wstring& name) {
    const bool ended = folder.ends_with(L'/') || folder.ends_with(os::kPathSeparator);
    return ended ? folder + name : folder + os::kPathSeparator + name;
}

class Collector {
public:
    Collector(ModuleHost& host, const FailureReport& fail) : host_(host), fail_(fail) {}

    void Add(std::wstring file) { files_.push_back(std::move(file)); }

    /// Folders are put off on a list, not on the stack: how deep they lie is nobody's promise.
    void AddFolder(const std::wstring& top) {
        const std::size_t before = files_.size();
        std::vector<std::wstring> folders = {top};
        while (!folders.empty()) {
            if (os::InterruptRequested())
                throw Interrupted();
            const std::wstring folder = std::exchange(folders.back(), {});
            folders.pop_back();
            const os::FolderListing listing = os::ListFolder(folder);
            if (!listing.failure.empty())
                Fail(folder, os::NarrowToUtf8(listing.failure));
            AddMediaFiles(folder, listing);
            for (auto name = listing.folders.rbegin(); name != listing.folders.rend(); ++name)
                folders.push_back(Inside(folder, *name));
        }
        if (files_.size() == before)
            Fail(top, "no files in it whose names the module handles");
    }

    void Fail(const std::wstring& path, const std::string& reason) {
        fail_(path, ToolError(path, reason).what());
    }

    std::vector<std::wstring> Take() { return std::move(files_); }

private:
    void AddMediaFiles(const std::wstring& folder, const os::FolderListing& listing) {
        for (const std::wstring& name : listing.files) {
            if (host_.ClassIdentifierFor(name) != 0)
                files_.push_back(Inside(folder, name));
        }
    }

    ModuleHost& host_;
    const FailureReport& fail_;
    std::vector<std::wstring> files_;
};

} // namespace

std::vector<std::wstring> CollectFiles(ModuleHost& host, const std::vector<std::wstring>& named, bool recurse,
                                       const FailureReport& fail) {
    Collector collector(host, fail);
    for (const std::wstring& path : named) {
        if (os::KindOfPath(path) != os::PathKind::kFolder)
            collector.Add(path);
        else if (recurse)
            collector.AddFolder(path);
        else
            collector.Fail(path, "Is a directory; -r takes the files in it");
    }
    return collector.Take();
}

} // namespace mpatool
