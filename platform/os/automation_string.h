/// CComBSTR, the wide automation string in which paths cross into the family's libraries.
///
/// A compiler with ATL supplies its own class; elsewhere this one serves, with the part of ATL's interface
/// that is used here, over the system's string allocation where there is one.
#pragma once

#include <climits>
#include <new>
#include <string_view>

#if defined(_MSC_VER)

#include <atlbase.h>

#else

#include <utility>

#if defined(_WIN32)

// As oleauto.h has them; windows.h, which that needs, would bring its macros to every file that handles a
// path.
using BSTR = wchar_t*;
extern "C" {
__declspec(dllimport) BSTR __stdcall SysAllocStringLen(const wchar_t* text, unsigned int length);
__declspec(dllimport) unsigned int __stdcall SysStringLen(BSTR text);
__declspec(dllimport) void __stdcall SysFreeString(BSTR text);
}

#else

#include "os/posix/automation_string.h"

#endif

/// Owns one BSTR; null stands for the empty string. Null, too, when memory runs out.
class CComBSTR {
public:
    CComBSTR() = default;

    /// Copies `length` characters, zeros among them included.
    CComBSTR(int length, const wchar_t* text)
        : m_str(length >= 0 ? SysAllocStringLen(text, static_cast<unsigned int>(length)) : nullptr) {}

    /// Copies up to the terminating zero; null gives null.
    // NOLINTNEXTLINE(google-explicit-constructor): as the class that it stands for
    CComBSTR(const wchar_t* text) {
        const std::wstring_view view(text != nullptr ? text : L"");
        if (text != nullptr && view.size() <= INT_MAX)
            m_str = SysAllocStringLen(text, static_cast<unsigned int>(view.size()));
    }
    /// Copies the string, zeros included.
    CComBSTR(const CComBSTR& other)
        : m_str(other.m_str != nullptr ? SysAllocStringLen(other.m_str, other.Length()) : nullptr) {}
    /// Takes the string over.
    CComBSTR(CComBSTR&& other) noexcept : m_str(std::exchange(other.m_str, nullptr)) {}
    /// Copies or takes over, and frees the earlier string.
    CComBSTR& operator=(CComBSTR other) noexcept {
        std::swap(m_str, other.m_str);
        return *this;
    }
    ~CComBSTR() { SysFreeString(m_str); }

    /// Characters; 0 for the empty string.
    unsigned int Length() const { return SysStringLen(m_str); }
    /// The string itself, which stays this object's; may be null.
    // NOLINTNEXTLINE(google-explicit-constructor): as the class that it stands for
    operator BSTR() const { return m_str; }

    BSTR m_str = nullptr; ///< owned; null stands for the empty string
};

#endif

namespace os {

/// The automation string with the characters of `text`; null when it is longer than such a string can be.
/// Throws std::bad_alloc: what is made of an empty path must not pass for an answer about another.
inline CComBSTR ToAutomationString(std::wstring_view text) {
    if (text.size() > INT_MAX)
        return {};
    CComBSTR string(static_cast<int>(text.size()), text.data());
    if (string.m_str == nullptr && !text.empty())
        throw std::bad_alloc();
    return string;
}

/// The characters of `text`, valid as long as it is.
inline std::wstring_view CharactersOf(const CComBSTR& text) {
    return text.m_str != nullptr ? std::wstring_view(text.m_str, text.Length()) : std::wstring_view();
}

} // namespace os
