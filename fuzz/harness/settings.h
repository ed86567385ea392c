/// The settings file beside the program, which must be alone in its folder.
#pragma once

#include "harness/input.h"

#include <string>

namespace fuzz {

/// Full path of the file.
std::wstring SettingsPath();

/// Writes the file, unless that is what it holds already. The end of the program deletes it.
void WriteSettings(View bytes);
void WriteSettings(const std::string& text);

/// With `decoderUse` as MP3DecoderUse alone.
void SelectDecoder(int decoderUse);

} // namespace fuzz
