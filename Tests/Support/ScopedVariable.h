#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace Tests {

// Sets or removes a variable of the environment for as long as it lives.
class ScopedVariable {
  public:
    ScopedVariable(std::string name, const std::optional<std::string>& value)
        : name_(std::move(name)), before_(current()) {
        put(value);
    }
    ~ScopedVariable() { put(before_); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

    void put(const std::optional<std::string>& value) const {
        if (value) {
            ::setenv(name_.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name_.c_str());
        }
    }

  private:
    std::optional<std::string> current() const {
        const char* const value = std::getenv(name_.c_str());
        return value == nullptr ? std::nullopt : std::optional<std::string>(value);
    }

    std::string name_;
    std::optional<std::string> before_;
};

} // namespace Tests
