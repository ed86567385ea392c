#include "mpatool/command_line.h"

#include "mpatool/tool_error.h"
#include "os/paths.h"

#include <CLI/CLI.hpp>

namespace mpatool {

namespace {

constexpr const char* kDescription =
    "Describes, decodes and indexes MPEG audio files (MP2, MP3) with the reader module.";

constexpr const char* kExitFooter = R"(Exit status:
  0    all went well
  1    a file could not be read, decoded or written; the reason stands on standard error
  2    the command line makes no sense
  130  ended by Ctrl-C; nothing half-made was left)";

constexpr const char* kDecodeFooter =
    R"(SAMPLES is a plain integer, counted per channel. TIME is 62.5s, 250ms, 1h2m, 1:02.5 or 1:00:00.

Without -o the output is FILE's name with the extension .wav (.raw with --format raw) in
the current folder. It gets its name only when it is complete. Pipes and devices work too.
Without --format the extension of OUT decides: .wav, .raw or .pcm; pipes and devices get WAV.
A WAV file whose sizes do not fit 32 bits is written as RF64. Raw is interleaved signed
16-bit little-endian PCM.

Without an index beside FILE, --start decodes what comes before and drops it. With one it jumps,
and sample 0 is another place: an index leaves the first frame out, and with it no decoder delay
is skipped.

)";

constexpr const char* kIndexFooter =
    R"(The index of song.mp3 is song.mp3.idx beside it; the module finds it there by itself. It gets its
name only when it is complete, so an existing one stays whole until then; in a file system without
links it is moved aside meanwhile. A run that is killed may leave files named .unfinished-*.

--verify writes nothing. It prints "good" and the number of frames, "stale" and the first
difference, or "no index" for each file; the exit status is 0 when all are good.

)";

constexpr const char* kFramesFooter =
    R"(The frames are those that the module delivers: with an index beside FILE from its first entry on,
else from the first frame that is no "Info" frame. A frame's first sample is its place in what
the module delivers; what lies before sample 0 is left out there.

)";

constexpr int kMaximumJobs = 64;

constexpr const char* kWaveName = "wav";
constexpr const char* kRawName = "raw";

/// The values as CLI11 stores them.
struct RawOptions {
    std::string module;
    std::vector<std::string> infoFiles;
    std::vector<std::string> indexFiles;
    bool json = false;
    bool csv = false;
    std::string file;
    std::string output;
    std::string format;
    std::string start;
    std::string length;
    bool force = false;
    bool index = false;
    bool verify = false;
    bool recurse = false;
    int jobs = 1;
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
    decode->add_flag("--index", raw.index, "Build an index first when there is none");
    decode->footer(std::string(kDecodeFooter) + kExitFooter);
    return decode;
}

CLI::App* AddIndexCommand(CLI::App& app, RawOptions& raw) {
    CLI::App* index = app.add_subcommand("index", "Build the indexes of files, or check them");
    index->add_option("FILE", raw.indexFiles, "MPEG audio files, or folders with -r")
        ->required()
        ->type_name("");
    CLI::Option* force = index->add_flag("--force", raw.force, "Replace existing indexes");
    CLI::Option* jobs = index->add_option("--jobs", raw.jobs, "Files to index side by side, 1 to 64")
                            ->check(CLI::Range(1, kMaximumJobs).description(""))
                            ->type_name("N");
    index->add_flag("--verify", raw.verify, "Compare existing indexes with their files instead")
        ->excludes(force)
        ->excludes(jobs);
    index->add_flag("-r", raw.recurse, "Take all media files in and below folders");
    index->footer(std::string(kIndexFooter) + kExitFooter);
    return index;
}

CLI::App* AddFramesCommand(CLI::App& app, RawOptions& raw) {
    CLI::App* frames = app.add_subcommand("frames", "List the frames of a file");
    frames->add_option("FILE", raw.file, "MPEG audio file")->required()->type_name("");
    CLI::Option* json = frames->add_flag("--json", raw.json, "Print a JSON object");
    frames->add_flag("--csv", raw.csv, "Print comma-separated values below a line of names")->excludes(json);
    frames->footer(std::string(kFramesFooter) + kExitFooter);
    return frames;
}

std::vector<std::wstring> WidenAll(const std::vector<std::string>& texts) {
    std::vector<std::wstring> wide;
    wide.reserve(texts.size());
    for (const std::string& text : texts)
        wide.push_back(os::WidenUtf8(text));
    return wide;
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
    options.index = raw.index;
    return options;
}

InfoOptions ToInfoOptions(const RawOptions& raw) {
    return {WidenAll(raw.infoFiles), os::WidenUtf8(raw.module), raw.json};
}

IndexOptions ToIndexOptions(const RawOptions& raw) {
    return {
        WidenAll(raw.indexFiles), os::WidenUtf8(raw.module), raw.force, raw.verify, raw.recurse, raw.jobs};
}

FramesOptions ToFramesOptions(const RawOptions& raw) {
    const TableForm form = raw.json ? TableForm::kJson : raw.csv ? TableForm::kCsv : TableForm::kReadable;
    return {os::WidenUtf8(raw.file), form};
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
    const CLI::App* index = AddIndexCommand(app, raw);
    const CLI::App* frames = AddFramesCommand(app, raw);
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
    if (index->parsed())
        return ToIndexOptions(raw);
    if (frames->parsed())
        return ToFramesOptions(raw);
    return ToDecodeOptions(raw);
}

} // namespace mpatool
