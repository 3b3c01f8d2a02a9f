#include "host/help/bash_completion.h"

namespace {

constexpr const char* kBashStart = R"(# Completions of audio-filter for bash.

_audio_filter_files() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen "$1" -- "$2")
}

_audio_filter_words() {
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
    [[ ${COMPREPLY[0]} != *: ]] || compopt -o nospace 2>/dev/null
}

_audio_filter() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
    local command= options= arguments= i
    # '=' is a word of its own.
    if [[ $cur == = ]]; then
        cur=
    elif [[ $prev == = ]]; then
        prev=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${COMP_WORDS[i]} in
)";

constexpr const char* kBashEnd = R"(    esac
    if [[ $cur == -* ]]; then
        _audio_filter_words "$options" "$cur"
    elif [[ -z $command ]]; then
        _audio_filter_words "$commands" "$cur"
    elif [[ -n $arguments ]]; then
        _audio_filter_words "$arguments" "$cur"
    else
        _audio_filter_files -f "$cur"
    fi
}

complete -F _audio_filter audio-filter
)";

std::string BashJoined(const std::vector<std::string>& words, const std::string& separator) {
    std::string joined;
    for (const std::string& word : words) {
        joined += (joined.empty() ? "" : separator) + word;
    }
    return joined;
}

/// The case of the words before a value.
std::string BashCase(const std::string& command, const OptionEntry& option) {
    std::vector<std::string> patterns;
    for (const std::string& name : option.names) {
        patterns.emplace_back(command).append("/").append(name);
    }
    std::string action;
    switch (ValueTypeOf(option.form)) {
        case ValueType::kFile: action = "_audio_filter_files -f \"$cur\"; "; break;
        case ValueType::kFolder: action = "_audio_filter_files -d \"$cur\"; "; break;
        case ValueType::kWords:
            action =
                "_audio_filter_words '" + BashJoined(ValuesOf(option.form), " ") + "' \"$cur\"; ";
            break;
        case ValueType::kFileBehindEquals:
        case ValueType::kFreeText: break;
    }
    return "        " + BashJoined(patterns, " | ") + ") " + action + "return ;;\n";
}

}  // namespace

std::string BashCompletion(const std::vector<CommandEntry>& table) {
    std::vector<std::string> commands;
    std::string options;
    std::string values;
    for (std::size_t i = 0; i < table.size(); ++i) {
        const std::string name = i == 0 ? "" : table[i].name;
        std::vector<std::string> names;
        std::string arguments;
        for (const OptionEntry& option : table[i].options) {
            names.insert(names.end(), option.names.begin(), option.names.end());
            if (option.names.empty()) {
                arguments = BashJoined(ValuesOf(option.form), " ");
            } else if (!option.form.empty()) {
                values += BashCase(name, option);
            }
        }
        if (i > 0) {
            commands.push_back(name);
        }
        options += "        '" + name + "') options='" + BashJoined(names, " ") + "'" +
                   (arguments.empty() ? "" : " arguments='" + arguments + "'") + " ;;\n";
    }
    return kBashStart + ("            " + BashJoined(commands, " | ")) +
           ") command=${COMP_WORDS[i]}; break ;;\n        esac\n    done\n" +
           "    local commands='" + BashJoined(commands, " ") + "'\n    case $command in\n" +
           options + "    esac\n    case $command/$prev in\n" + values + kBashEnd;
}
