#include "harness/media.h"

#include "index/index_format.h"
#include "os/paths.h"
#include "os/private_folder.h"
#include "support/test_files.h"

#include <algorithm>
#include <filesystem>

namespace fuzz {

namespace {

/// Made once: it goes at the end of the program, when the last media file has taken its files along.
const std::filesystem::path& Folder() {
    static os::PrivateFolder folder;
    static const std::filesystem::path path = [] {
        Require(folder.Create(L"trn-fuzz-"), "a folder among the temporary files");
        return std::filesystem::path(os::NarrowToUtf8(folder.Path()));
    }();
    return path;
}

std::filesystem::path IndexPath(const std::string& name) {
    return Folder() / (name + ".idx");
}

void Delete(const std::filesystem::path& path) {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

} // namespace

Media::Media(View media, const std::string& name) : name_(name), path_(test::Wide(Folder() / name)) {
    Delete(IndexPath(name_));
    Rewrite(media);
}

Media::Media(View media, View index) : Media(media) {
    PutIndex(index);
}

void Media::PutIndex(View index) {
    test::WriteFile(IndexPath(name_), index);
}

Media::~Media() {
    Delete(Folder() / name_);
    Delete(IndexPath(name_));
}

void Media::Rewrite(View media) {
    test::WriteFile(Folder() / name_, media);
    mediaBytes_ = std::max(mediaBytes_, media.size());
}

Bytes Media::IndexOnDisk() const {
    return std::filesystem::exists(IndexPath(name_)) ? test::ReadFile(IndexPath(name_)) : Bytes();
}

Work Media::WorkFor(std::size_t answerBytes) const {
    std::error_code error;
    const auto size = std::filesystem::file_size(IndexPath(name_), error);
    const std::size_t indexBytes = error ? 0 : static_cast<std::size_t>(size);
    const std::size_t entries = std::max(indexBytes, trnmpa::kIndexHeaderBytes) - trnmpa::kIndexHeaderBytes;
    Work work;
    work.inputBytes = mediaBytes_ + indexBytes;
    work.indexEntries = entries / trnmpa::kIndexEntryBytes;
    work.answerBytes = answerBytes;
    return work;
}

} // namespace fuzz
