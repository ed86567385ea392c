/// The process's command line, its standard streams and its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace os {

/// The arguments of this process as UTF-8, the program's name first. On Windows `count` and `values` are not
/// looked at: main's narrow arguments have lost what the ANSI code page cannot hold.
std::vector<std::string> CommandLineArguments(int count, char** values);

/// True when people read what is written to standard output, to standard error.
bool IsOutputTerminal();
bool IsErrorTerminal();

/// Columns of the terminal that standard error is; 0 when it is none or does not tell.
int ErrorTerminalColumns();

/// Writes UTF-8 text to standard error, also where the console has another encoding. Failures are ignored.
void WriteErrorText(std::string_view text);

/// Waits for bytes on standard input and reads what has come, at most what `destination` holds; 0 at the end
/// of input; no value on a failure, which LastErrorText names, and when InterruptRequested came in while
/// waiting (on Windows, where a pipe is waited for all the same, right after that).
std::optional<std::size_t> ReadStandardInput(std::span<std::uint8_t> destination);

/// To be called first in a program. From now on:
/// - a write to a closed pipe fails instead of ending the process;
/// - a request to end the process (an interrupt from the keyboard, a termination signal, a closed console)
///   only sets the flag that InterruptRequested gives, and a blocking write ends early;
/// - a standard stream that the caller has closed fails when it is used; no file opened later takes its
///   place.
void PrepareProcess();
bool InterruptRequested();

/// Ends the process in the way that the request would have ended it: a shell sees the exit status 130 after a
/// keyboard interrupt. On Windows every request gives 130.
[[noreturn]] void EndByInterrupt();

} // namespace os
