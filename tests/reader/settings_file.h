/// The settings file beside the running program; such a program must be alone in its folder.
#pragma once

#include "os/paths.h"
#include "support/test_files.h"

#include <filesystem>
#include <string>

namespace test {

/// Absent at first, and deleted at the end.
class SettingsFile {
public:
    SettingsFile() { std::filesystem::remove(path_); }
    ~SettingsFile() { std::filesystem::remove(path_); }
    SettingsFile(const SettingsFile&) = delete;
    SettingsFile& operator=(const SettingsFile&) = delete;

    void Write(const std::string& text) const { WriteFile(path_, Bytes(text.begin(), text.end())); }
    void SelectDecoder(const std::string& value) const {
        Write("[CODEC]\r\nMP3DecoderUse=" + value + "\r\n");
    }

private:
    const std::filesystem::path path_ =
        std::filesystem::path(os::NarrowToUtf8(os::ExecutablePath())).parent_path() / "trnfsdk.ini";
};

} // namespace test
