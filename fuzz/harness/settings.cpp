#include "harness/settings.h"

#include "os/paths.h"
#include "support/test_files.h"

#include <filesystem>
#include <optional>

namespace fuzz {

namespace {

/// Absent at first, and deleted at the end.
class File {
public:
    File() { Delete(); }
    ~File() { Delete(); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    const std::filesystem::path& Path() const { return path_; }

    void Write(View bytes) {
        if (written_ && std::equal(bytes.begin(), bytes.end(), written_->begin(), written_->end()))
            return;
        test::WriteFile(path_, bytes);
        written_ = Bytes(bytes.begin(), bytes.end());
    }

private:
    void Delete() const {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }

    const std::filesystem::path path_ =
        std::filesystem::path(os::NarrowToUtf8(os::ExecutablePath())).parent_path() / "trnfsdk.ini";
    std::optional<Bytes> written_;
};

File& TheFile() {
    static File file;
    return file;
}

} // namespace

std::wstring SettingsPath() {
    return test::Wide(TheFile().Path());
}

void WriteSettings(View bytes) {
    TheFile().Write(bytes);
}

void WriteSettings(const std::string& text) {
    WriteSettings(View(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

void SelectDecoder(int decoderUse) {
    WriteSettings("[CODEC]\nMP3DecoderUse=" + std::to_string(decoderUse) + "\n");
}

} // namespace fuzz
