#include "host/help/command_table.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <sstream>

namespace {

std::string FormOf(const CLI::Option& option) {
    const std::string form = option.get_type_size() != 0 ? option.get_type_name() : "";
    return form.empty() && option.get_positional() ? option.get_name(true) : form;
}

OptionEntry EntryOf(const CLI::Option& option) {
    OptionEntry entry = {.names = {},
                         .form = FormOf(option),
                         .text = option.get_description(),
                         .standard = option.get_default_str(),
                         .group = option.get_group(),
                         .repeats = option.get_expected_max() > 1};
    for (const std::string& name : option.get_snames()) {
        entry.names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        entry.names.push_back("--" + name);
    }
    return entry;
}

CommandEntry EntryOf(const CLI::App& app) {
    CommandEntry entry = {app.get_name(), app.get_description(), {}};
    for (const CLI::Option* option : app.get_options()) {
        entry.options.push_back(EntryOf(*option));
    }
    return entry;
}

}  // namespace

std::vector<CommandEntry> CommandTable(const CLI::App& app) {
    std::vector<CommandEntry> table = {EntryOf(app)};
    for (const CLI::App* command : app.get_subcommands({})) {
        table.push_back(EntryOf(*command));
    }
    return table;
}

std::vector<std::string> ValuesOf(const std::string& form) {
    std::vector<std::string> values;
    std::istringstream words(form);
    for (std::string word; std::getline(words, word, '|');) {
        const auto placeholder = std::find_if(word.begin(), word.end(),
                                              [](unsigned char c) { return std::isupper(c) != 0; });
        const std::string value(word.begin(), placeholder);
        if (!value.empty() && value.find("..") == std::string::npos) {
            values.push_back(value);
        }
    }
    return values;
}

ValueType ValueTypeOf(const std::string& form) {
    if (form == "DIR") {
        return ValueType::kFolder;
    }
    if (form == "FILE") {
        return ValueType::kFile;
    }
    if (form.ends_with("=FILE")) {
        return ValueType::kFileBehindEquals;
    }
    return ValuesOf(form).empty() ? ValueType::kFreeText : ValueType::kWords;
}
