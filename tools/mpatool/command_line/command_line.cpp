#include "mpatool/command_line/command_line.h"

#include "mpatool/command_line/command_texts.h"
#include "mpatool/command_line/completions.h"
#include "mpatool/command_line/help_texts.h"
#include "mpatool/command_line/man_page.h"
#include "mpatool/command_line/raw_options.h"
#include "mpatool/decode/kernel_choice.h"
#include "mpatool/output/tool_error.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace mpatool {

namespace {

constexpr int kMaximumJobs = 64;

constexpr std::int64_t kLastSlice = 0xFFFF'FFFF;

void AddOutputOptions(CLI::App& command, RawOptions& raw) {
    command.add_option("-o,--output", raw.output, "Output file; - for standard output")->type_name("OUT");
    command.add_option("--format", raw.format, "wav or raw")
        ->check(CLI::IsMember({kWaveName, kRawName}).description(""))
        ->type_name("FORMAT");
    command.add_option("--rate", raw.rate, "Sample rate to deliver, 4000 to 384000")
        ->check(CLI::Range(kLowestRate, kHighestRate).description(""))
        ->type_name("HZ");
    command.add_option("--channels", raw.channels, "Channels to deliver, 1 or 2")
        ->check(CLI::IsMember({1, 2}).description(""))
        ->type_name("N");
    command.add_option("--bits", raw.bits, "Bits of a sample, 8, 16, 24 or 32")
        ->check(CLI::IsMember({8, 16, 24, 32}).description(""))
        ->type_name("B");
    command.add_flag("--force", raw.force, "Overwrite an existing output file");
}

void AddStretchOptions(CLI::App& command, RawOptions& raw, const std::string& verb) {
    command.add_option("--start", raw.start, "First sample to " + verb)->type_name("SAMPLES|TIME");
    command.add_option("--length", raw.length, "How much to " + verb + "; less when the stream ends before")
        ->type_name("SAMPLES|TIME");
}

CLI::App* AddInfoCommand(CLI::App& app, RawOptions& raw) {
    CLI::App* info = app.add_subcommand(
        "info", "Show what files claim, what they hold and what the module tells about them");
    info->add_option("FILE", raw.files, "MPEG audio files; - for standard input")->required()->type_name("");
    info->add_flag("--json", raw.json, "Print a JSON document");
    info->footer(std::string(kInfoFooter) + kInputFooter + kExitFooter);
    return info;
}

CLI::App* AddDecodeCommand(CLI::App& app, RawOptions& raw) {
    CLI::App* decode = app.add_subcommand("decode", "Decode a file to PCM");
    decode->add_option("FILE", raw.file, "MPEG audio file")->required()->type_name("");
    AddOutputOptions(*decode, raw);
    AddStretchOptions(*decode, raw, "deliver");
    decode->add_option("--decoder", raw.decoder, "builtin or external")
        ->check(CLI::IsMember({kBuiltInName, kExternalName}).description(""))
        ->type_name("DECODER");
    decode->add_option("--kernels", raw.kernels, "plain, sse2, avx2 or all")
        ->check(CLI::IsMember(KernelNames()).description(""))
        ->type_name("KERNELS");
    decode->add_flag("--index", raw.index, "Build an index first when there is none");
    decode->footer(std::string(kDecodeFooter) + kExitFooter);
    return decode;
}

CLI::App* AddSlicesCommand(CLI::App& app, RawOptions& raw) {
    CLI::App* slices =
        app.add_subcommand("slices", "Read a file in slices of one duration, one after the other");
    slices->add_option("FILE", raw.file, "MPEG audio file")->required()->type_name("");
    slices->add_option("--time", raw.sliceTime, "Duration of a slice")->required()->type_name("MS");
    AddOutputOptions(*slices, raw);
    slices->add_option("--start", raw.firstSlice, "Number of the first slice to read")
        ->check(CLI::Range(std::int64_t{0}, kLastSlice).description(""))
        ->type_name("SLICE");
    slices->add_option("--count", raw.sliceCount, "Slices to read; fewer when the stream ends before")
        ->check(CLI::Range(std::int64_t{1}, kLastSlice).description(""))
        ->type_name("N");
    slices->footer(std::string(kSlicesFooter) + kExitFooter);
    return slices;
}

CLI::App* AddIndexCommand(CLI::App& app, RawOptions& raw) {
    CLI::App* index = app.add_subcommand("index", "Build the indexes of files, or check them");
    index->add_option("FILE", raw.files, "MPEG audio files, or folders with -r")->required()->type_name("");
    CLI::Option* force = index->add_flag("--force", raw.force, "Replace existing indexes");
    CLI::Option* jobs = index->add_option("--jobs", raw.jobs, "Files to index side by side, 1 to 64")
                            ->check(CLI::Range(1, kMaximumJobs).description(""))
                            ->type_name("N");
    index->add_flag("--verify", raw.verify, "Compare existing indexes with their files instead")
        ->excludes(force)
        ->excludes(jobs);
    index->add_flag("-r", raw.recurse, "Take all media files in and below folders");
    index->add_flag("--json", raw.json, "Print a JSON document");
    index->footer(std::string(kIndexFooter) + kExitFooter);
    return index;
}

CLI::App* AddFramesCommand(CLI::App& app, RawOptions& raw) {
    CLI::App* frames = app.add_subcommand("frames", "List the frames of a file");
    frames->add_option("FILE", raw.file, "MPEG audio file; - for standard input")->required()->type_name("");
    CLI::Option* json = frames->add_flag("--json", raw.json, "Print a JSON document");
    frames->add_flag("--csv", raw.csv, "Print comma-separated values below a line of names")->excludes(json);
    frames->footer(std::string(kFramesFooter) + kInputFooter + kExitFooter);
    return frames;
}

CLI::App* AddWaveformCommand(CLI::App& app, RawOptions& raw) {
    CLI::App* waveform = app.add_subcommand("waveform", "Draw the sound of a file as SVG or PNG");
    waveform->add_option("FILE", raw.file, "MPEG audio file")->required()->type_name("");
    waveform->add_option("-o,--output", raw.output, "Output file; - for standard output")->type_name("OUT");
    waveform->add_option("--format", raw.format, "svg or png")
        ->check(CLI::IsMember({kSvgName, kPngName}).description(""))
        ->type_name("FORMAT");
    waveform->add_option("--width", raw.width, "Pixels across, 100 to 20000; 1600 without it")
        ->check(CLI::Range(kSmallestWidth, kLargestWidth).description(""))
        ->type_name("N");
    waveform->add_option("--height", raw.height, "Pixels down, 50 to 5000")
        ->check(CLI::Range(kSmallestHeight, kLargestHeight).description(""))
        ->type_name("N");
    AddStretchOptions(*waveform, raw, "draw");
    waveform->add_flag("--bitrate", raw.bitRate, "Add the bit rate of the frames");
    waveform->add_flag("--frames", raw.frames, "Add block types and the bit reservoir of Layer III");
    waveform->add_flag("--force", raw.force, "Overwrite an existing output file");
    waveform->footer(std::string(kWaveformFooter) + kExitFooter);
    return waveform;
}

CLI::App* AddSelftestCommand(CLI::App& app, RawOptions& raw) {
    CLI::App* selftest = app.add_subcommand("selftest", "Hold a module to the contract with its hosts");
    selftest->add_option("--streams", raw.streams)->group("");
    selftest->add_flag("--json", raw.json, "Print a JSON document");
    selftest->footer(std::string(kSelftestFooter) + kExitFooter);
    return selftest;
}

CLI::App* AddCheckCommand(CLI::App& app, RawOptions& raw) {
    CLI::App* check = app.add_subcommand("check", "Look for damage in files");
    check->add_option("FILE", raw.files, "MPEG audio files; - for standard input")->required()->type_name("");
    check->add_flag("--json", raw.json, "Print a JSON document");
    check->footer(std::string(kCheckFooter) + kInputFooter + kExitFooter);
    return check;
}

/// `mpatool --generate man|bash|zsh`, which --help does not tell, is for the installation.
std::string Generated(const CLI::App& app, const std::string& kind) {
    const CommandText texts = TextsOf(app);
    if (kind == "man")
        return ManPage(texts, "mpatool " MPATOOL_VERSION, kExitFooter);
    if (kind == "bash")
        return BashCompletion(texts);
    if (kind == "zsh")
        return ZshCompletion(texts);
    throw UsageError("--generate: man, bash or zsh");
}

template <auto Convert>
Command Converted(const RawOptions& raw) {
    return Convert(raw);
}

struct Subcommand {
    const CLI::App* app;
    Command (*options)(const RawOptions& raw); ///< converts what was typed
};

} // namespace

Command ParseCommandLine(const std::vector<std::string>& arguments) {
    RawOptions raw;
    CLI::App app(kDescription, "mpatool");
    // A path may begin with a slash on Windows, too.
    app.allow_windows_style_options(false);
    app.set_version_flag("--version", "mpatool " MPATOOL_VERSION);
    app.add_option("--module", raw.module, "The reader module; otherwise the one beside this program")
        ->type_name("PATH");
    app.footer(kExitFooter);
    app.require_subcommand(1);
    app.fallthrough();
    const Subcommand subcommands[] = {
        {AddInfoCommand(app, raw), Converted<ToInfoOptions>},
        {AddIndexCommand(app, raw), Converted<ToIndexOptions>},
        {AddFramesCommand(app, raw), Converted<ToFramesOptions>},
        {AddSlicesCommand(app, raw), Converted<ToSlicesOptions>},
        {AddSelftestCommand(app, raw), Converted<ToSelftestOptions>},
        {AddCheckCommand(app, raw), Converted<ToCheckOptions>},
        {AddWaveformCommand(app, raw), Converted<ToWaveformOptions>},
        {AddDecodeCommand(app, raw), Converted<ToDecodeOptions>},
    };
    if (arguments.size() == 3 && arguments[1] == "--generate")
        return ShowText{Generated(app, arguments[2])};
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
    const auto* chosen =
        std::ranges::find_if(subcommands, [](const Subcommand& each) { return each.app->parsed(); });
    return chosen->options(raw);
}

} // namespace mpatool
