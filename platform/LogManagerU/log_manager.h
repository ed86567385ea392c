/// Stand-in for the library LogManagerU: the log.
#pragma once

#include <cstdint>
#include <string>

/// Writes log lines, in UTF-8:
///
///     2024-01-31 12:34:56.789 [name] what was streamed in up to `endl`
///
/// Where the lines go is read from the environment variable TRN_LOG when the name is set: a file (appended
/// to), "-" for standard error, nowhere when it is absent or empty (the default). Whatever goes wrong while
/// writing is swallowed; nothing is thrown. Not thread-safe; lines of several objects do not mix.
class TRN_LogManagerU {
public:
    using Manipulator = TRN_LogManagerU& (*)(TRN_LogManagerU&);

    TRN_LogManagerU() = default;
    virtual ~TRN_LogManagerU() = default;

    /// Names the log configuration.
    void ConfigName(const std::wstring& name) noexcept;

    TRN_LogManagerU& operator<<(const std::wstring& text) noexcept;
    TRN_LogManagerU& operator<<(std::int32_t number) noexcept;
    TRN_LogManagerU& operator<<(Manipulator manipulator) { return manipulator(*this); }

    /// Ends the line and writes it out.
    static TRN_LogManagerU& endl(TRN_LogManagerU& log) noexcept;

private:
    std::wstring name_;
    std::wstring target_;
    std::wstring line_;
};
