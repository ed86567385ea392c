/// Second names for files.
#pragma once

#include <string>

namespace os {

/// Makes `link`, a free name in the folder of the file `path`, lead to that file: as a symbolic link or a
/// hard one, whichever this system lets a user delete more surely. It goes with DeleteFileAt, which leaves
/// the file alone. False, and nothing is made, where the file system knows neither, this user may make
/// neither, the name is taken, or a link could not be deleted again as such.
bool LinkBeside(const std::wstring& path, const std::wstring& link);

} // namespace os
