#include "mpatool/check/check_command.h"
#include "mpatool/command_line/command_line.h"
#include "mpatool/decode/decode_command.h"
#include "mpatool/frames/frames_command.h"
#include "mpatool/index/index_command.h"
#include "mpatool/info/info_command.h"
#include "mpatool/output/text_output.h"
#include "mpatool/output/tool_error.h"
#include "mpatool/selftest/selftest_command.h"
#include "mpatool/slices/slices_command.h"
#include "mpatool/waveform/waveform_command.h"
#include "os/console.h"

#include <new>
#include <variant>

namespace mpatool {

namespace {

struct CommandRunner {
    int operator()(const ShowText& text) const {
        Print(text.text);
        return kExitSuccess;
    }
    int operator()(const InfoOptions& options) const { return RunInfo(options); }
    int operator()(const DecodeOptions& options) const {
        RunDecode(options);
        return kExitSuccess;
    }
    int operator()(const SlicesOptions& options) const {
        RunSlices(options);
        return kExitSuccess;
    }
    int operator()(const IndexOptions& options) const { return RunIndex(options); }
    int operator()(const CheckOptions& options) const { return RunCheck(options); }
    int operator()(const FramesOptions& options) const {
        RunFrames(options);
        return kExitSuccess;
    }
    int operator()(const WaveformOptions& options) const {
        RunWaveform(options);
        return kExitSuccess;
    }
    int operator()(const SelftestOptions& options) const { return RunSelftest(options); }
};

int Run(int argumentCount, char** argumentValues) {
    try {
        return std::visit(CommandRunner(),
                          ParseCommandLine(os::CommandLineArguments(argumentCount, argumentValues)));
    } catch (const UsageError& error) {
        PrintError(std::string(error.what()) + "\nmpatool: --help tells more");
        return kExitUsage;
    } catch (const OutputClosed&) {
        return kExitFailure;
    } catch (const Interrupted&) {
        os::EndByInterrupt();
    } catch (const std::bad_alloc&) {
        PrintError("out of memory");
    } catch (const std::exception& error) {
        PrintError(error.what());
    }
    return kExitFailure;
}

} // namespace

} // namespace mpatool

int main(int argumentCount, char** argumentValues) {
    os::PrepareProcess();
    return mpatool::Run(argumentCount, argumentValues);
}
