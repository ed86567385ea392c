#include "mpatool/index_command.h"

#include "mpatool/count_text.h"
#include "mpatool/index_pool.h"
#include "mpatool/index_progress.h"
#include "mpatool/index_verify.h"
#include "mpatool/input_files.h"
#include "mpatool/text_output.h"
#include "mpatool/tool_error.h"
#include "os/paths.h"

namespace mpatool {

namespace {

/// The exit status, which the first failure makes one.
class Status {
public:
    void Fail(const std::string& message) {
        PrintError(message);
        Fail();
    }
    void Fail() { value_ = kExitFailure; }
    int Value() const { return value_; }

private:
    int value_ = kExitSuccess;
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

/// Verifies files one after the other under one progress bar.
class Verifier {
public:
    explicit Verifier(const std::vector<std::wstring>& files) {
        done_.totalFiles = files.size();
        for (const std::wstring& file : files)
            done_.totalBytes += MediaBytes(file);
    }

    IndexVerdict Verify(const std::wstring& file) {
        const IndexVerdict verdict =
            VerifyIndex(file, [this](std::int64_t bytes, std::int64_t entries) { Show(bytes, entries); });
        done_.frames += verdict.frames;
        return verdict;
    }

    void NoteEnd(const std::wstring& file) {
        bar_.Clear();
        done_.doneBytes += MediaBytes(file);
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

void VerifyAll(const std::vector<std::wstring>& files, Status& status) {
    Verifier verifier(files);
    for (const std::wstring& file : files) {
        try {
            const IndexVerdict verdict = verifier.Verify(file);
            verifier.NoteEnd(file);
            Print(os::NarrowToUtf8(file) + ": " + VerdictText(verdict) + "\n");
            if (verdict.kind != IndexVerdict::Kind::kGood)
                status.Fail();
        } catch (const ToolError& error) {
            verifier.NoteEnd(file);
            status.Fail(error.what());
        }
    }
}

void BuildAll(ModuleHost& host, const std::vector<std::wstring>& files, const IndexOptions& options,
              Status& status) {
    BuildIndexes(host, {files, options.force, options.jobs}, [&](const IndexOutcome& outcome) {
        if (outcome.end != IndexOutcome::End::kDone) {
            status.Fail(outcome.message);
            return;
        }
        if (!outcome.message.empty())
            PrintError(outcome.message);
        Print(os::NarrowToUtf8(outcome.file) + ": " + CountOf(outcome.frames, "frame") + " indexed\n");
    });
}

} // namespace

int RunIndex(const IndexOptions& options) {
    ModuleHost host(options.module);
    Status status;
    const auto files = CollectFiles(host, options.files, options.recurse,
                                    [&](const std::string& message) { status.Fail(message); });
    if (options.verify)
        VerifyAll(files, status);
    else
        BuildAll(host, files, options, status);
    return status.Value();
}

} // namespace mpatool
