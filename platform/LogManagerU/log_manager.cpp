#include "LogManagerU/log_manager.h"

#include "os/log_output.h"
#include "os/paths.h"

#include <cstdio>
#include <exception>

namespace {

constexpr const wchar_t* kTargetVariable = L"TRN_LOG";
constexpr const wchar_t* kStandardError = L"-";

/// One event is one line, whatever its text holds.
std::wstring WithoutControls(std::wstring text) {
    for (wchar_t& character : text) {
        if (character < L' ')
            character = L' ';
    }
    return text;
}

void Write(const std::wstring& target, const std::string& line) {
    if (target == kStandardError)
        std::fwrite(line.data(), 1, line.size(), stderr);
    else if (!target.empty())
        os::AppendToFile(target, line);
}

} // namespace

void TRN_LogManagerU::ConfigName(const std::wstring& name) noexcept {
    try {
        name_ = name;
        target_ = os::EnvironmentVariable(kTargetVariable);
    } catch (const std::exception&) {
        target_.clear();
    }
}

TRN_LogManagerU& TRN_LogManagerU::operator<<(const std::wstring& text) noexcept {
    try {
        if (!target_.empty())
            line_ += text;
    } catch (const std::exception&) {
        // The line stays without this text.
    }
    return *this;
}

TRN_LogManagerU& TRN_LogManagerU::operator<<(std::int32_t number) noexcept {
    try {
        return *this << std::to_wstring(number);
    } catch (const std::exception&) {
        return *this;
    }
}

TRN_LogManagerU& TRN_LogManagerU::endl(TRN_LogManagerU& log) noexcept {
    try {
        const std::wstring event = L"[" + log.name_ + L"] " + log.line_;
        Write(log.target_, os::LocalTime() + " " + os::NarrowToUtf8(WithoutControls(event)) + "\n");
    } catch (const std::exception&) {
        // A lost line is better than a failing module.
    }
    log.line_.clear();
    return log;
}
