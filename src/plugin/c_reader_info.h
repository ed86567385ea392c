/// What the plain C functions tell of a file.
#pragma once

#include "reader/sample_reader.h"
#include "trnmpafileread/c_api.h"

#include <string>

namespace trnmpa {

/// Describes the file `path`, which `engine` has open; asks the file's probe for what an index would tell.
trnmpa_info Describe(const KwMpAudioReader2& engine, const std::wstring& path);

} // namespace trnmpa
