/// The place where an index comes into being.
#pragma once

#include <string>

namespace mpatool {

/// Keeps what stands under an index's name whole until the new one is. The module writes an index under no
/// other name than its media file's; so the media file gets a second name beside the first, a link, and the
/// index is built for that. Where the file system has no links, the index is built under its own name, and an
/// earlier one stands aside meanwhile.
class UnfinishedIndex {
public:
    enum class Links { kWherePossible, kNone };

    /// Makes the place. With `replace`, an existing index gives way in the end. Throws ToolError when there
    /// is one and it must not, or nothing can be written there.
    UnfinishedIndex(const std::wstring& media, bool replace, Links links = Links::kWherePossible);
    /// Abandons what is not committed.
    ~UnfinishedIndex() { Abandon(); }
    UnfinishedIndex(const UnfinishedIndex&) = delete;
    UnfinishedIndex& operator=(const UnfinishedIndex&) = delete;

    /// The name under which the module is to open the media file, and where its index then stands.
    const std::wstring& Media() const { return workMedia_; }
    const std::wstring& Index() const { return workIndex_; }

    /// Says that the index is complete and closed: gives it its name. Gives what could not be cleared away:
    /// "... was left", else nothing. Throws ToolError; Abandon still works.
    std::string Commit();

    /// Takes the unfinished index away and says what is left: "no index was left", say. Once only.
    std::string Abandon();

private:
    void BuildInPlace();
    std::string PutBack();
    std::string RemoveUnfinished();

    std::wstring media_;
    std::wstring index_;
    std::wstring workMedia_;
    std::wstring workIndex_;
    std::wstring aside_; ///< the earlier index; empty when it stands where it always did
    bool replace_;
    bool open_ = true; ///< neither committed nor abandoned
};

/// Throws ToolError when the index of `media` exists and `replace` does not allow for that, or something
/// other than a file has its name.
void RequireIndexMayBeMade(const std::wstring& media, bool replace);

} // namespace mpatool
