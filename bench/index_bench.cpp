// index_bench build FILE: builds the index of FILE.
// index_bench open FILE: opens FILE with its index again and again; prints the best and the median
// milliseconds.

#include "os/paths.h"
#include "reader/sample_reader.h"
#include "trnmpafileread/index_creator.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr int kOpens = 20;

bool Build(const std::wstring& path) {
    TRN_MpaFileIndexCreator creator;
    if (creator.Initialize() != 1 || creator.SetInputFile(os::ToAutomationString(path)) != 1)
        return false;
    creator.CreateFileIndex();
    PROGRESS_INFO progress = {};
    creator.GetFileIdxingProgress(progress);
    return progress.state == TRN_INDEX_FINISHED;
}

bool OpenOnce(const std::wstring& path) {
    trnmpa::KwMpAudioReader2 reader;
    KW_MEDIA_BASE_INFO_ST info;
    return reader.Initialize() == 1 && reader.SetInputFile(path) == 1 && reader.GetStreamInfo(&info) == 1;
}

bool Open(const std::wstring& path) {
    std::vector<double> milliseconds;
    for (int i = 0; i < kOpens; ++i) {
        const auto started = std::chrono::steady_clock::now();
        if (!OpenOnce(path))
            return false;
        milliseconds.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started).count());
    }
    std::ranges::sort(milliseconds);
    std::printf("%.3f %.3f\n", milliseconds.front(), milliseconds[milliseconds.size() / 2]);
    return true;
}

} // namespace

int main(int count, char** arguments) {
    const std::string what = count == 3 ? arguments[1] : "";
    if (what == "build")
        return Build(os::WidenUtf8(arguments[2])) ? 0 : 1;
    if (what == "open")
        return Open(os::WidenUtf8(arguments[2])) ? 0 : 1;
    std::fputs("usage: index_bench build|open FILE\n", stderr);
    return 2;
}
