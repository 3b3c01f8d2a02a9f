#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// An option, or the positional arguments.
struct OptionEntry {
    std::vector<std::string> names;  ///< "-o" and "--output"; empty for positional arguments
    std::string form;                ///< of the value; empty for none
    std::string text;
    std::string standard;  ///< the default; empty for none
    std::string group;
    bool repeats;

    bool operator==(const OptionEntry&) const = default;
};

/// The program, or one of its commands.
struct CommandEntry {
    std::string name;
    std::string text;
    std::vector<OptionEntry> options;
};

/// The program and its commands, as --help shows them.
std::vector<CommandEntry> CommandTable(const CLI::App& app);

/// The values that completions offer for the form of an option: its words, and the parts of its words up to a
/// placeholder. "0|1|off" has "0", "1" and "off", "MS|random:SEED" has "random:".
std::vector<std::string> ValuesOf(const std::string& form);

/// What completes a value.
enum class ValueType { kWords, kFile, kFolder, kFileBehindEquals, kFreeText };
ValueType ValueTypeOf(const std::string& form);
