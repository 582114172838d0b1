#pragma once

#include <stdexcept>

namespace devserver {

/// What keeps a task of the program from being done; what() is one line for the person at the
/// terminal. run() prints one that ends the program; one in a request becomes its reply of 500.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace devserver
