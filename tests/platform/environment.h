/// Environment variables for tests.
#pragma once

#include <cstdlib>
#include <string>

namespace test {

/// Sets a variable for as long as it lives; an empty value removes it.
class ScopedVariable {
public:
    ScopedVariable(std::string name, const std::string& value) : name_(std::move(name)) {
        const char* before = std::getenv(name_.c_str());
        before_ = before != nullptr ? before : "";
        Set(value);
    }
    ~ScopedVariable() { Set(before_); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

    void Set(const std::string& value) const {
#if defined(_WIN32)
        _putenv_s(name_.c_str(), value.c_str());
#else
        value.empty() ? unsetenv(name_.c_str()) : setenv(name_.c_str(), value.c_str(), 1);
#endif
    }

private:
    std::string name_;
    std::string before_;
};

} // namespace test
