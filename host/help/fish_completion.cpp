#include "host/help/fish_completion.h"

namespace {

std::string FishQuoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    }
    return quoted + "'";
}

std::string FishValue(const std::string& form) {
    switch (ValueTypeOf(form)) {
        case ValueType::kFile:
        case ValueType::kFileBehindEquals: return " -r -F";
        case ValueType::kFolder: return " -x -a '(__fish_complete_directories)'";
        case ValueType::kFreeText: return " -x";
        case ValueType::kWords: break;
    }
    std::string words;
    for (const std::string& value : ValuesOf(form)) {
        words += (words.empty() ? "" : " ") + value;
    }
    return " -x -a " + FishQuoted(words);
}

std::string FishLine(const std::string& condition, const OptionEntry& option) {
    std::string text = "complete -c audio-filter -n " + FishQuoted(condition);
    for (const std::string& name : option.names) {
        text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    if (option.names.empty()) {
        const bool isFile = ValueTypeOf(option.form) == ValueType::kFile;
        return text + (isFile ? " -F" : FishValue(option.form)) + "\n";
    }
    return text + (option.form.empty() ? "" : FishValue(option.form)) + " -d " +
           FishQuoted(option.text) + "\n";
}

}  // namespace

std::string FishCompletion(const std::vector<CommandEntry>& table) {
    std::string text = "# Completions of audio-filter for fish.\n\ncomplete -c audio-filter -f\n";
    for (std::size_t i = 0; i < table.size(); ++i) {
        const std::string condition =
            i == 0 ? "__fish_use_subcommand" : "__fish_seen_subcommand_from " + table[i].name;
        text += i == 0 ? ""
                       : "\ncomplete -c audio-filter -n __fish_use_subcommand -a " + table[i].name +
                             " -d " + FishQuoted(table[i].text) + "\n";
        for (const OptionEntry& option : table[i].options) {
            text += FishLine(condition, option);
        }
    }
    return text;
}
