#include "mpatool/selftest/selftest_command.h"

#include "mpatool/module/module_host.h"
#include "mpatool/module/module_place.h"
#include "mpatool/output/json_document.h"
#include "mpatool/output/text_output.h"
#include "mpatool/output/tool_error.h"
#include "mpatool/selftest/checks.h"
#include "mpatool/selftest/streams.h"
#include "os/child_process.h"
#include "os/paths.h"
#include "os/private_folder.h"
#include "os/shared_library.h"

#include <nlohmann/json.hpp>

#include <array>
#include <sstream>
#include <string_view>

namespace mpatool {

namespace {

/// The checks came to their end and some are bad: no status that a program that goes down is likely to give.
constexpr int kExitSomeBad = 77;

constexpr const wchar_t* kErrorFile = L"errors.txt";

/// All checks on the module at `path`, with the streams of `folder`.
void RunChecks(const std::wstring& path, const SelftestFolder& folder, Verdicts& verdicts) {
    os::SharedLibrary library;
    const bool loaded = library.Load(path);
    verdicts.Check("the module can be loaded", loaded, os::NarrowToUtf8(library.ErrorText()));
    if (!loaded)
        return;
    const auto entry = library.FunctionNamed<GetPluginReadModuleFunction>("GetPluginReadModule");
    verdicts.Check("GetPluginReadModule is exported", entry != nullptr);
    if (entry == nullptr)
        return;
    const std::unique_ptr<PLUGIN_FILE_READER_MODULE> module(entry());
    verdicts.Check("GetPluginReadModule gives a module", module != nullptr);
    if (module == nullptr)
        return;
    CheckModule(*module, verdicts);
    if (NewReader(*module) == nullptr)
        return;
    CheckNewReader(*module, verdicts);
    CheckOpening(*module, folder, verdicts);
    CheckReading(*module, folder, verdicts);
    CheckIndexing(*module, folder, verdicts);
}

int RunHere(const SelftestOptions& options) {
    Verdicts verdicts;
    RunChecks(options.module, SelftestFolder(options.streams), verdicts);
    const int failures = verdicts.Failures();
    Print(std::to_string(verdicts.Checks()) + " checks, " +
          (failures == 0 ? "all good" : std::to_string(failures) + " bad") + "\n");
    return failures == 0 ? kExitSuccess : kExitSomeBad;
}

std::string_view TextOf(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

void PutStreams(os::PrivateFolder& folder) {
    const auto require = [&folder](bool done) {
        if (!done)
            throw ToolError(L"selftest", L"no folder for its streams can be made: " + folder.ErrorText());
    };
    require(folder.Create(L"mpatool-"));
    for (const SelftestStream& stream : SelftestStreams())
        require(folder.AddFile(stream.name, TextOf(stream.bytes)));
    const SelftestStream& indexed = IndexedStream();
    require(folder.AddFile(indexed.name, TextOf(indexed.bytes)));
    // Filled by the module, and so known to the folder, which removes it.
    require(folder.AddFile(std::wstring(indexed.name) + L".idx", ""));
    require(folder.AddFile(L"variable.mp3", VariableStream()));
    require(folder.AddFile(kErrorFile, ""));
}

/// Takes in what the checks print and passes it on: at once, or as a document at the end.
class Report {
public:
    explicit Report(bool json) : json_(json) {}

    void Add(std::string_view text) {
        if (json_)
            lines_ += text;
        else
            Print(text);
    }

    void Finish(const std::wstring& module, bool good) const {
        using Json = nlohmann::ordered_json;
        if (!json_)
            return;
        Json checks = Json::array();
        std::istringstream lines(lines_);
        for (std::string line; std::getline(lines, line);) {
            const bool isGood = line.starts_with(kGoodStart);
            if (isGood || line.starts_with(kBadStart))
                checks.push_back({{"good", isGood}, {"text", line.substr(kGoodStart.size())}});
        }
        PrintJson({{"schema", SchemaOf("selftest")},
                   {"module", os::NarrowToUtf8(module)},
                   {"good", good},
                   {"checks", checks}});
    }

private:
    const bool json_;
    std::string lines_;
};

} // namespace

int RunSelftest(const SelftestOptions& options) {
    if (!options.streams.empty())
        return RunHere(options);
    // The digests are those of the module's own decoder.
    const ModulePlace place(options.module, Decoder::kBuiltIn);
    RequireReadable(place.Path());
    os::PrivateFolder folder;
    PutStreams(folder);
    os::ChildProcess checks;
    if (!checks.Start({.program = os::ExecutablePath(),
                       .arguments = {L"selftest", L"--module", place.Path(), L"--streams", folder.Path()},
                       .workingFolder = L"",
                       .errorFile = folder.PathOf(kErrorFile)}))
        throw ToolError(os::ExecutablePath(), "cannot be started once more for the checks");
    Report report(options.json);
    std::array<std::uint8_t, 4096> buffer = {};
    while (const std::size_t size = checks.ReadOutput(buffer))
        report.Add(TextOf(std::span(buffer).first(size)));
    const int status = checks.Wait();
    if (status != kExitSuccess && status != kExitSomeBad)
        report.Add(std::string(kBadStart) + "the module brought the program down: exit status " +
                   std::to_string(status) + "\n");
    report.Finish(options.module.empty() ? DefaultModulePath() : options.module, status == kExitSuccess);
    return status == kExitSuccess ? kExitSuccess : kExitFailure;
}

} // namespace mpatool
