#include "mpatool/selftest_command.h"

#include "mpatool/module_place.h"
#include "mpatool/selftest/checks.h"
#include "mpatool/selftest/streams.h"
#include "mpatool/text_output.h"
#include "mpatool/tool_error.h"
#include "os/child_process.h"
#include "os/paths.h"
#include "os/private_folder.h"
#include "os/shared_library.h"

#include <array>
#include <string_view>

namespace mpatool {

namespace {

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
    return failures == 0 ? kExitSuccess : kExitFailure;
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
    std::array<std::uint8_t, 4096> buffer = {};
    while (const std::size_t size = checks.ReadOutput(buffer))
        Print(TextOf(std::span(buffer).first(size)));
    const int status = checks.Wait();
    if (status != kExitSuccess && status != kExitFailure)
        Print("BAD   the module brought the program down: exit status " + std::to_string(status) + "\n");
    return status == kExitSuccess ? kExitSuccess : kExitFailure;
}

} // namespace mpatool
