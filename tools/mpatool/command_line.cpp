#include "mpatool/command_line.h"

#include "mpatool/tool_error.h"
#include "os/paths.h"

#include <CLI/CLI.hpp>

namespace mpatool {

namespace {

constexpr const char* kDescription =
    "Describes and decodes MPEG audio files (MP2, MP3) with the reader module.";

constexpr const char* kExitFooter = R"(Exit status:
  0  all went well
  1  a file could not be read, decoded or written; the reason stands on standard error
  2  the command line makes no sense)";

constexpr const char* kDecodeFooter =
    R"(SAMPLES is a plain integer, counted per channel. TIME is 62.5s, 250ms, 1h2m, 1:02.5 or 1:00:00.

Without -o the output is FILE's name with the extension .wav (.raw with --format raw) in
the current folder. It gets its name only when it is complete. Pipes and devices work too.
Without --format the extension of OUT decides: .wav, .raw or .pcm; pipes and devices get WAV.
A WAV file whose sizes do not fit 32 bits is written as RF64. Raw is interleaved signed
16-bit little-endian PCM.

Without an index beside FILE, --start decodes what comes before and drops it.

)";

constexpr const char* kWaveName = "wav";
constexpr const char* kRawName = "raw";

/// The values as CLI11 stores them.
struct RawOptions {
    std::string module;
    std::vector<std::string> infoFiles;
    bool json = false;
    std::string file;
    std::string output;
    std::string format;
    std::string start;
    std::string length;
    bool force = false;
};

StreamLength RequireLength(const std::string& option, const std::string& text) {
    const auto length = ParseStreamLength(text);
    if (!length)
        throw UsageError(option + ": '" + text +
                         "' is neither a number of samples nor a time such as 62.5s or 1:02.5");
    return *length;
}

CLI::App* AddInfoCommand(CLI::App& app, RawOptions& raw) {
    CLI::App* info =
        app.add_subcommand("info", "Show what the module and a walk over all frames tell about files");
    info->add_option("FILE", raw.infoFiles, "MPEG audio files")->required()->type_name("");
    info->add_flag("--json", raw.json, "Print a JSON array with one object per file");
    return info;
}

CLI::App* AddDecodeCommand(CLI::App& app, RawOptions& raw) {
    CLI::App* decode = app.add_subcommand("decode", "Decode a file to 16-bit PCM");
    decode->add_option("FILE", raw.file, "MPEG audio file")->required()->type_name("");
    decode->add_option("-o,--output", raw.output, "Output file; - for standard output")->type_name("OUT");
    decode->add_option("--format", raw.format, "wav or raw")
        ->check(CLI::IsMember({kWaveName, kRawName}).description(""))
        ->type_name("FORMAT");
    decode->add_option("--start", raw.start, "First sample to deliver")->type_name("SAMPLES|TIME");
    decode->add_option("--length", raw.length, "How much to deliver; less when the stream ends before")
        ->type_name("SAMPLES|TIME");
    decode->add_flag("--force", raw.force, "Overwrite an existing output file");
    decode->footer(std::string(kDecodeFooter) + kExitFooter);
    return decode;
}

DecodeOptions ToDecodeOptions(const RawOptions& raw) {
    DecodeOptions options;
    options.file = os::WidenUtf8(raw.file);
    options.module = os::WidenUtf8(raw.module);
    options.output = os::WidenUtf8(raw.output);
    if (!raw.format.empty())
        options.format = raw.format == kRawName ? OutputFormat::kRaw : OutputFormat::kWave;
    if (!raw.start.empty())
        options.start = RequireLength("--start", raw.start);
    if (!raw.length.empty())
        options.length = RequireLength("--length", raw.length);
    options.force = raw.force;
    return options;
}

InfoOptions ToInfoOptions(const RawOptions& raw) {
    InfoOptions options;
    for (const std::string& file : raw.infoFiles)
        options.files.push_back(os::WidenUtf8(file));
    options.module = os::WidenUtf8(raw.module);
    options.json = raw.json;
    return options;
}

} // namespace

Command ParseCommandLine(const std::vector<std::string>& arguments) {
    RawOptions raw;
    CLI::App app(kDescription, "mpatool");
    app.set_version_flag("--version", "mpatool " MPATOOL_VERSION);
    app.add_option("--module", raw.module, "The reader module; otherwise the one beside this program")
        ->type_name("PATH");
    app.footer(kExitFooter);
    app.require_subcommand(1);
    app.fallthrough();
    const CLI::App* info = AddInfoCommand(app, raw);
    AddDecodeCommand(app, raw);
    try {
        // CLI11 takes the arguments from the back.
        app.parse(
            std::vector<std::string>(arguments.rbegin(), arguments.rend() - (arguments.empty() ? 0 : 1)));
    } catch (const CLI::CallForHelp&) {
        return ShowText{app.help()};
    } catch (const CLI::CallForAllHelp&) {
        return ShowText{app.help("", CLI::AppFormatMode::All)};
    } catch (const CLI::CallForVersion& version) {
        return ShowText{std::string(version.what()) + "\n"};
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what());
    }
    if (info->parsed())
        return ToInfoOptions(raw);
    return ToDecodeOptions(raw);
}

} // namespace mpatool
