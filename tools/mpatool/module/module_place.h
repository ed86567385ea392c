/// Where the module is loaded from, which decides what settings it reads.
#pragma once

#include "mpatool/module/decoder_choice.h"
#include "os/private_folder.h"

#include <optional>
#include <string>

namespace mpatool {

/// The decoder that the settings choose for the module at `module` (empty: the one beside this program).
Decoder DecoderBySettings(const std::wstring& module);

/// The place of a module that decodes with the wanted decoder. Where the settings say another one, the module
/// is loaded from a private folder in which a settings file of its own stands; that of the module's own
/// folder is never touched. To be destroyed after what was loaded from it.
class ModulePlace {
public:
    /// Empty `module`: the one beside this program. No `decoder`: as the settings say. Throws ToolError, also
    /// when a settings file beside this program says otherwise: it comes before that of any module.
    ModulePlace(const std::wstring& module, std::optional<Decoder> decoder);

    /// What to load.
    const std::wstring& Path() const { return path_; }
    /// The module as users know it.
    const std::wstring& Name() const { return name_; }
    Decoder InUse() const { return decoder_; }

private:
    void MoveToPrivateFolder(Decoder decoder);

    os::PrivateFolder folder_;
    std::wstring name_;
    std::wstring path_;
    Decoder decoder_ = Decoder::kBuiltIn;
};

} // namespace mpatool
