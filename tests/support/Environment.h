#pragma once

#include <optional>
#include <string>

namespace support {

/// An environment variable that has another value, or none, while the object lives.
class ScopedVariable {
public:
    ScopedVariable(std::string name, const std::optional<std::string>& value);
    ~ScopedVariable();
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    void put(const std::optional<std::string>& value) const;

    std::string name_;
    std::optional<std::string> before_;
};

}  // namespace support
