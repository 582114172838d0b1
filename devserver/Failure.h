#pragma once

#include <stdexcept>

namespace devserver {

/// What keeps the program from starting or going on; what() is one line for the person at the
/// terminal. Only run() catches it.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace devserver
