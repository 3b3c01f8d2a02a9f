#pragma once

#include <functional>
#include <string>

/// How inputs are read.
struct ReadOptions {
    bool strict = false;  ///< inputs that end early are refused
    std::function<void(const std::string&)> warn = [](const std::string&) {};  ///< takes a line
};
