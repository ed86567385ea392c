#include "mpatool/index/index_command.h"

#include "mpatool/index/index_pool.h"
#include "mpatool/index/index_progress.h"
#include "mpatool/index/index_verify.h"
#include "mpatool/index/input_files.h"
#include "mpatool/output/count_text.h"
#include "mpatool/output/json_document.h"
#include "mpatool/output/shown_text.h"
#include "mpatool/output/text_output.h"
#include "mpatool/output/tool_error.h"
#include "os/paths.h"

#include <nlohmann/json.hpp>

namespace mpatool {

namespace {

using Json = nlohmann::ordered_json;

/// What became of the files: lines as they come, or one document at the end. The first failure makes the exit
/// status one.
class Results {
public:
    explicit Results(bool json) : json_(json) {}

    void Add(const std::wstring& file, const std::string& text, const Json& fields) {
        if (!json_)
            return Print(ShownPath(file) + ": " + text + "\n");
        files_.push_back({{"file", os::NarrowToUtf8(file)}});
        files_.back().update(fields);
    }
    /// Of a file, or of what was named as one.
    void Fail(const std::wstring& file, const std::string& message) {
        PrintError(message);
        files_.push_back(FailedFile(file, message));
        Fail();
    }
    void Fail() { status_ = kExitFailure; }

    /// The exit status.
    int Finish() const {
        if (json_)
            PrintDocument("index", files_);
        return status_;
    }

private:
    const bool json_;
    Json files_ = Json::array();
    int status_ = kExitSuccess;
};

std::string VerdictText(const IndexVerdict& verdict) {
    switch (verdict.kind) {
    case IndexVerdict::Kind::kGood:
        return "good (" + CountOf(verdict.frames, "frame") + ")";
    case IndexVerdict::Kind::kStale:
        return "stale: " + verdict.difference;
    case IndexVerdict::Kind::kMissing:
        break;
    }
    return "no index";
}

Json VerdictFields(const IndexVerdict& verdict) {
    switch (verdict.kind) {
    case IndexVerdict::Kind::kGood:
        return {{"state", "good"}, {"frames", verdict.frames}};
    case IndexVerdict::Kind::kStale:
        return {{"state", "stale"}, {"difference", verdict.difference}};
    case IndexVerdict::Kind::kMissing:
        break;
    }
    return {{"state", "missing"}};
}

/// Verifies files one after the other under one progress bar.
class Verifier {
public:
    explicit Verifier(const std::vector<std::wstring>& files) {
        done_.totalFiles = files.size();
        for (const std::wstring& file : files)
            done_.totalBytes += BytesToIndex(file);
    }

    IndexVerdict Verify(const std::wstring& file) {
        const IndexVerdict verdict =
            VerifyIndex(file, [this](std::int64_t bytes, std::int64_t entries) { Show(bytes, entries); });
        done_.frames += verdict.frames;
        return verdict;
    }

    void NoteEnd(const std::wstring& file) {
        bar_.Clear();
        done_.doneBytes += BytesToIndex(file);
        ++done_.doneFiles;
    }

private:
    void Show(std::int64_t bytes, std::int64_t entries) {
        // Asking the clock at every frame would cost more than the frame.
        constexpr std::int64_t kEntriesBetween = 1024;
        if (entries % kEntriesBetween != 0 || !bar_.IsDue())
            return;
        IndexProgress progress = done_;
        progress.doneBytes += bytes;
        progress.frames += entries;
        bar_.Draw(progress);
    }

    IndexProgressBar bar_;
    IndexProgress done_;
};

void VerifyAll(const std::vector<std::wstring>& files, Results& results) {
    Verifier verifier(files);
    for (const std::wstring& file : files) {
        try {
            const IndexVerdict verdict = verifier.Verify(file);
            verifier.NoteEnd(file);
            results.Add(file, VerdictText(verdict), VerdictFields(verdict));
            if (verdict.kind != IndexVerdict::Kind::kGood)
                results.Fail();
        } catch (const ToolError& error) {
            verifier.NoteEnd(file);
            results.Fail(file, error.what());
        }
    }
}

void BuildAll(ModuleHost& host, const std::vector<std::wstring>& files, const IndexOptions& options,
              Results& results) {
    BuildIndexes(host, {files, options.force, options.jobs}, [&](const IndexOutcome& outcome) {
        if (outcome.end != IndexOutcome::End::kDone) {
            results.Fail(outcome.file, outcome.message);
            return;
        }
        if (!outcome.message.empty())
            PrintError(outcome.message);
        results.Add(outcome.file, CountOf(outcome.frames, "frame") + " indexed",
                    {{"state", "built"}, {"frames", outcome.frames}});
    });
}

} // namespace

int RunIndex(const IndexOptions& options) {
    ModuleHost host(options.module);
    Results results(options.json);
    const auto files = CollectFiles(
        host, options.files, options.recurse,
        [&](const std::wstring& path, const std::string& message) { results.Fail(path, message); });
    if (options.verify)
        VerifyAll(files, results);
    else
        BuildAll(host, files, options, results);
    return results.Finish();
}

} // namespace mpatool
