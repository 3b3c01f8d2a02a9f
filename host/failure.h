#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>
#include <system_error>

/// An error that ends the command line; its text is the line printed on standard error.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;

    /// An error in a file. Control characters in the path become '?', so that the message stays one
    /// line.
    Failure(std::string path, const std::string& reason)
        : std::runtime_error(Printable(std::move(path)) + ": " + reason) {}

    /// An error of the system in a file.
    /// @param error errno; 0 if unknown
    Failure(std::string path, const std::string& reason, int error)
        : Failure(std::move(path), WithCause(reason, error)) {}

    /// Appends the system's message.
    static std::string WithCause(const std::string& reason, int error) {
        return error == 0 ? reason : reason + ": " + std::generic_category().message(error);
    }

    /// The path with '?' for control characters.
    static std::string Printable(std::string path) {
        const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7F; };
        std::replace_if(path.begin(), path.end(), isControl, '?');
        return path;
    }
};
