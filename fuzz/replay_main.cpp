/// Runs inputs through a target without an engine: the files named, and those in the folders named.
#include "harness/limits.h"
#include "harness/target.h"
#include "support/test_files.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

namespace {

namespace fs = std::filesystem;

void Run(const fs::path& file) {
    std::printf("%s\n", file.string().c_str());
    std::fflush(stdout);
    const fuzz::ExactBlock input(test::ReadFile(file));
    LLVMFuzzerTestOneInput(input.Bytes().data(), input.Bytes().size());
}

std::vector<fs::path> FilesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder))
        files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

} // namespace

int main(int argc, char** argv) {
    std::size_t inputs = 0;
    for (int i = 1; i < argc; ++i) {
        const fs::path path = argv[i];
        const std::vector<fs::path> files = fs::is_directory(path) ? FilesIn(path) : std::vector{path};
        if (files.empty()) {
            std::fprintf(stderr, "no inputs in %s\n", argv[i]);
            return 1;
        }
        for (const fs::path& file : files)
            Run(file);
        inputs += files.size();
    }
    std::printf("%zu inputs\n", inputs);
    fuzz::PrintLimitsMet();
    return inputs > 0 ? 0 : 1;
}
