#include "os/private_folder.h"

#include "os/output_file.h"
#include "os/paths.h"

#include <cstdint>
#include <span>

namespace os {

std::wstring PrivateFolder::PathOf(const std::wstring& name) const {
    return path_ + kPathSeparator + name;
}

bool PrivateFolder::AddFile(const std::wstring& name, OutputFile& file) {
    if (path_.empty())
        return false;
    const std::wstring place = PathOf(name);
    if (!file.Create(place)) {
        errorText_ = file.ErrorText();
        return false;
    }
    files_.push_back(place);
    return true;
}

bool PrivateFolder::AddFile(const std::wstring& name, std::string_view bytes) {
    OutputFile file;
    if (!AddFile(name, file))
        return false;
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    const bool written =
        file.Write(std::span<const std::uint8_t>(data, bytes.size())) == WriteResult::kDone && file.Close();
    if (!written)
        errorText_ = file.ErrorText();
    return written;
}

} // namespace os
