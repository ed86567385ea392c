/// Files for the module's readers, which open them by path.
#pragma once

#include "harness/limits.h"
#include "harness/target.h"

#include <string>

namespace fuzz {

/// A media file and perhaps an index, in a folder of this process's own among the temporary files (TMPDIR:
/// the runs put it into memory). The files of an earlier object are replaced.
class Media {
public:
    explicit Media(View media) : Media(media, "media.mp3") {}
    Media(View media, const std::string& name);
    /// With the index beside it.
    Media(View media, View index);
    ~Media();
    Media(const Media&) = delete;
    Media& operator=(const Media&) = delete;

    const std::wstring& Path() const { return path_; }

    /// Puts an index beside the media file.
    void PutIndex(View index);

    /// Cuts the media file, or writes it anew.
    void Rewrite(View media);

    /// What stands on disk beside the media file; empty when there is no index.
    Bytes IndexOnDisk() const;

    /// Reading `answerBytes` of PCM with the files as they are.
    Work WorkFor(std::size_t answerBytes = 0) const;

private:
    std::string name_;
    std::wstring path_;
    std::size_t mediaBytes_ = 0;
};

} // namespace fuzz
