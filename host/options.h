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
    std::string output;
    bool force = false;
    bool noClobber = false;
    std::string outputDir;
    std::string suffix;
    std::string to;
    bool recursive = false;
    bool skipExisting = false;
    bool dryRun = false;
    bool scan = false;
    std::string action;            ///< of the microphone: install, remove or status
    std::string microphoneSource;  ///< empty for the default microphone
    int jobs = 0;                  ///< 0 for one a core
    std::string denoise = "2";
    std::string gain = "off";
    std::string phaseCheck = "file";
    std::string mix = "on";
    std::string music = "ignore";
    std::vector<std::string> changes;
    std::string loudness = "off";
    std::string blockMs = "10";
    std::string track;
    std::string bitRate;
    std::string bits;
    std::string raw;
    std::string logLevel = "info";
    bool json = false;
    bool noStats = false;
    bool quiet = false;
};

/// Declares the subcommands and their options. --help, the man page and the completions are made from them:
/// the type name of an option is the form of its value, with '|' between alternatives, words in capitals for placeholders and
/// FILE or DIR where a path stands.
/// @param arguments receives the values when `app` parses a command line
void Declare(CLI::App& app, Arguments& arguments);
