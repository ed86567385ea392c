#include "os/output_file.h"

namespace os {

std::wstring ReserveNameBeside(const std::wstring& path) {
    constexpr int kTries = 100;
    for (int i = 0; i < kTries; ++i) {
        std::wstring name = TemporaryNameBeside(path);
        OutputFile file;
        if (file.Create(name))
            return name;
        if (KindOfPath(name) == PathKind::kMissing)
            break; // not for want of a free name
    }
    return {};
}

} // namespace os
