#include "host/help/zsh_completion.h"

namespace {

/// Text inside single quotes, with a backslash before the characters that _arguments takes as its own.
std::string ZshEscaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '[' || c == ']' || c == ':' || c == '\\') {
            escaped += '\\';
        }
        escaped += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return escaped;
}

std::string ZshValue(const OptionEntry& option) {
    std::string message = ":" + ZshEscaped(option.form) + ":";
    switch (ValueTypeOf(option.form)) {
        case ValueType::kFile: return message + "_files";
        case ValueType::kFolder: return message + "_files -/";
        case ValueType::kFileBehindEquals: return message + "{ compset -P \"*=\" && _files }";
        case ValueType::kFreeText: return message;
        case ValueType::kWords: break;
    }
    std::string words;
    for (const std::string& value : ValuesOf(option.form)) {
        words += (words.empty() ? "" : " ") + ZshEscaped(value);
    }
    return message + "(" + words + ")";
}

/// An argument of _arguments.
std::string ZshSpecification(const OptionEntry& option) {
    if (option.names.empty()) {
        return (option.repeats ? "'*" : "'1") + ZshValue(option) + "'";
    }
    std::string excluded;
    std::string names;
    for (const std::string& name : option.names) {
        excluded += (excluded.empty() ? "" : " ") + name;
        names += (names.empty() ? "" : ",") + name;
    }
    const std::string before = option.repeats ? "'*'" : "'(" + excluded + ")'";
    return before + (option.names.size() > 1 ? "{" + names + "}" : names) + "'[" +
           ZshEscaped(option.text) + "]" + (option.form.empty() ? "" : ZshValue(option)) + "'";
}

std::string ZshArguments(const CommandEntry& command, const std::string& indent) {
    std::string text;
    for (const OptionEntry& option : command.options) {
        text += " \\\n" + indent + ZshSpecification(option);
    }
    return text;
}

}  // namespace

std::string ZshCompletion(const std::vector<CommandEntry>& table) {
    std::string text =
        "#compdef audio-filter\n# Completions of audio-filter for zsh.\n\n"
        "_audio-filter() {\n"
        "    local curcontext=$curcontext state line\n"
        "    typeset -A opt_args\n"
        "    _arguments -C" +
        ZshArguments(table.front(), "        ") +
        " \\\n        '1:command:->command' \\\n        '*::argument:->argument'\n"
        "    case $state in\n        command)\n            local -a commands=(\n";
    for (std::size_t i = 1; i < table.size(); ++i) {
        text += "                '" + table[i].name + ":" + ZshEscaped(table[i].text) + "'\n";
    }
    text +=
        "            )\n            _describe command commands\n            ;;\n"
        "        argument)\n            case $words[1] in\n";
    for (std::size_t i = 1; i < table.size(); ++i) {
        text += "                " + table[i].name + ")\n                    _arguments" +
                ZshArguments(table[i], "                        ") + "\n                    ;;\n";
    }
    return text + "            esac\n            ;;\n    esac\n}\n\n_audio-filter \"$@\"\n";
}
