/// Where paths of the family's storage lead.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace storage {

/// Sets the folder that stands for the storage; empty for none. Any thread may call it.
void SetFolder(const std::wstring& folder);

/// The file that `path` names: itself when it is no storage path, else what follows "dqs:\" below the storage
/// folder. Nothing when no folder is set or the path would lead out of it.
std::optional<std::wstring> Resolve(std::wstring_view path);

} // namespace storage
