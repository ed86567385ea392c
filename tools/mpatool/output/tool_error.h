/// The ways in which a run ends early.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace mpatool {

/// Exit statuses, as --help lists them.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitDamage = 3;

/// Something could not be done; the message says what and why.
class ToolError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;

    /// "FILE: reason".
    ToolError(const std::wstring& file, const std::string& reason);
    ToolError(const std::wstring& file, const std::wstring& reason);
};

/// The command line makes no sense; the message says why.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Nobody reads the output any more: no message, since a program such as `head` does this on purpose.
class OutputClosed : public std::exception {};

/// The user wants the run to end.
class Interrupted : public std::exception {};

/// Throws ToolError with the system's reason when `path` cannot be read as a file.
void RequireReadable(const std::wstring& path);

} // namespace mpatool
