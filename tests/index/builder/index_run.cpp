#include "index/builder/index_run.h"

#include <fstream>
#include <stdexcept>

namespace test {

namespace fs = std::filesystem;

fs::path IndexPathOf(const fs::path& media) {
    fs::path index = media;
    index += ".idx";
    return index;
}

CComBSTR Automation(const fs::path& path) {
    return os::ToAutomationString(Wide(path));
}

PROGRESS_INFO ProgressOf(TRN_MpaFileIndexCreator& creator) {
    PROGRESS_INFO progress = {};
    if (creator.GetFileIdxingProgress(progress) != 1)
        throw std::runtime_error("no progress record");
    return progress;
}

IndexRun RunBuilder(const fs::path& media) {
    TRN_MpaFileIndexCreator creator;
    if (creator.Initialize() != 1)
        throw std::runtime_error("Initialize failed");
    IndexRun run;
    run.opened = creator.SetInputFile(Automation(media));
    run.built = creator.CreateFileIndex();
    run.progress = ProgressOf(creator);
    if (fs::exists(IndexPathOf(media)))
        run.index = ReadFile(IndexPathOf(media));
    return run;
}

IndexRun RunBuilderOn(const ScratchFolder& folder, const Bytes& media) {
    const fs::path path = folder.Path() / "media.mp3";
    fs::remove(path);
    fs::remove(IndexPathOf(path));
    WriteFile(path, media);
    return RunBuilder(path);
}

Bytes HeaderOnDisk(const fs::path& index) {
    Bytes bytes(kPlaceholder.size());
    std::ifstream file(index, std::ios::binary);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

} // namespace test
