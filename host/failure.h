#pragma once

#include <stdexcept>

/// What stops the command line, in the words of its one line on standard error.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};
