#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>

/// What stops the command line, in the words of its one line on standard error.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;

    /// Names a file and what is wrong with it. Control characters in the path become '?': a newline
    /// among them would cut the reason off.
    Failure(std::string path, const std::string& reason)
        : std::runtime_error(Printable(std::move(path)) + ": " + reason) {}

private:
    static std::string Printable(std::string path) {
        const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7F; };
        std::replace_if(path.begin(), path.end(), isControl, '?');
        return path;
    }
};
