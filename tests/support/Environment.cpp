#include "support/Environment.h"

#include <cstdlib>

namespace support {

ScopedVariable::ScopedVariable(std::string name, const std::optional<std::string>& value)
    : name_(std::move(name)) {
    if (const char* before = std::getenv(name_.c_str()); before != nullptr) {
        before_ = before;
    }
    put(value);
}

ScopedVariable::~ScopedVariable() {
    put(before_);
}

void ScopedVariable::put(const std::optional<std::string>& value) const {
    if (value) {
        setenv(name_.c_str(), value->c_str(), 1);
    } else {
        unsetenv(name_.c_str());
    }
}

}  // namespace support
