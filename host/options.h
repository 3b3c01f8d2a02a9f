#pragma once

#include <string>
#include <vector>

#include "host/clean.h"

namespace CLI {
class App;
}

/// The values of the options as they are given.
struct Arguments {
    CleanJob job;
    std::vector<std::string> files;
    std::vector<std::string> sources;
    std::string denoise = "2";
    std::string gain = "off";
    std::string phaseCheck = "file";
    std::string mix = "on";
    std::string music = "ignore";
    std::vector<std::string> changes;
    std::string blockMs = "10";
    std::string raw;
    std::string logLevel = "info";
    bool json = false;
    bool quiet = false;
};

/// Declares the subcommands and their options. Help, man page and completions are made from them.
/// @param arguments receives the values when `app` parses a command line
void Declare(CLI::App& app, Arguments& arguments);
