#include "host/help/command_table.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <regex>

#include "host/command_line_fixture.h"
#include "host/help/bash_completion.h"
#include "host/help/fish_completion.h"
#include "host/help/man_page.h"
#include "host/help/zsh_completion.h"
#include "host/options.h"

namespace {

std::vector<CommandEntry> Table() {
    CLI::App app;
    Arguments arguments;
    Declare(app, arguments);
    return CommandTable(app);
}

/// The names of options in --help of a command.
Words OptionsInHelp(const std::string& command) {
    const std::string help =
        RunHost(command == "audio-filter" ? Words{"--help"} : Words{command, "--help"}).out;
    const std::regex line("(^|\n)  (-[a-z],)?(--[a-z-]+)");
    Words names;
    for (std::sregex_iterator match(help.begin(), help.end(), line), end; match != end; ++match) {
        names.push_back((*match)[3]);
    }
    return names;
}

/// The text from a marker to the next one.
std::string Part(const std::string& text, const std::string& marker, const std::string& end) {
    const std::size_t start = text.find(marker);
    return start == std::string::npos
               ? ""
               : text.substr(start, text.find(end, start + marker.size()) - start);
}

bool HasWord(const std::string& text, const std::string& word) {
    return std::regex_search(text, std::regex("(^|[^a-z-])" + word + "([^a-z-]|$)"));
}

TEST(CommandTable, HasEveryOptionOfHelp) {
    std::size_t options = 0;
    for (const CommandEntry& command : Table()) {
        Words names;
        for (const OptionEntry& option : command.options) {
            if (!option.names.empty()) {
                names.push_back(option.names.back());
            }
        }
        Words help = OptionsInHelp(command.name);
        std::sort(names.begin(), names.end());
        std::sort(help.begin(), help.end());
        EXPECT_EQ(names, help) << command.name;
        options += names.size();
    }
    EXPECT_GT(options, 60U);
}

TEST(CommandTable, EveryOptionOfHelpIsInTheManPageAndInEachCompletion) {
    const std::vector<CommandEntry> table = Table();
    const std::string man = std::regex_replace(ManPage(table, "1"), std::regex("\\\\-"), "-");
    const std::string bash = BashCompletion(table);
    const std::string zsh = ZshCompletion(table);
    const std::string fish = FishCompletion(table);
    for (std::size_t i = 1; i < table.size(); ++i) {
        const std::string& name = table[i].name;
        for (const std::string& option : OptionsInHelp(name)) {
            EXPECT_TRUE(HasWord(Part(man, ".SS " + name, ".S"), option) || option == "--help")
                << name << " " << option;
            EXPECT_TRUE(HasWord(Part(bash, "'" + name + "') options=", "\n"), option))
                << name << " " << option;
            EXPECT_TRUE(HasWord(Part(zsh, " " + name + ")\n", ";;"), option))
                << name << " " << option;
            const std::string condition =
                "-n '__fish_seen_subcommand_from " + name + "'( -s [a-z])? -l " + option.substr(2);
            EXPECT_TRUE(std::regex_search(fish, std::regex(condition + "( |\n)")))
                << name << " " << option;
        }
    }
    EXPECT_TRUE(HasWord(man, "--version") && HasWord(zsh, "--version"));
}

TEST(CommandTable, ValuesAreTheWordsOfTheForm) {
    EXPECT_EQ(ValuesOf("0|1|off"), (Words{"0", "1", "off"}));
    EXPECT_EQ(ValuesOf("0..1|off"), Words{"off"});
    EXPECT_EQ(ValuesOf("MS|random:SEED"), Words{"random:"});
    EXPECT_EQ(ValuesOf("FILE"), Words());
    EXPECT_EQ(ValuesOf(""), Words());
}

TEST(CommandTable, FilesAndFoldersAreCompletedWhereTheFormSaysSo) {
    EXPECT_EQ(ValueTypeOf("FILE"), ValueType::kFile);
    EXPECT_EQ(ValueTypeOf("DIR"), ValueType::kFolder);
    EXPECT_EQ(ValueTypeOf("TYPE=FILE"), ValueType::kFileBehindEquals);
    EXPECT_EQ(ValueTypeOf("on|off"), ValueType::kWords);
    EXPECT_EQ(ValueTypeOf("LUFS|off"), ValueType::kWords);
    EXPECT_EQ(ValueTypeOf("N"), ValueType::kFreeText);
}

TEST(CommandTable, ValuesOfSettingsAreAcceptedByTheCommandLine) {
    for (const CommandEntry& command : Table()) {
        for (const OptionEntry& option : command.options) {
            for (const std::string& value : ValuesOf(option.form)) {
                if (command.name != "info" || value.ends_with(':') || option.names.empty()) {
                    continue;
                }
                EXPECT_NE(RunHost({"info", "none", option.names.back(), value}).status, 2)
                    << option.names.back() << " " << value;
            }
        }
    }
}

CommandEntry Program() {
    return {"audio-filter", "Does", {}};
}

TEST(ManPage, EscapesWhatRoffTakesAsItsOwn) {
    const CommandEntry command = {
        "clean", "it", {{{"--x"}, "A|B", ".start 'a' \\ -1", "2", "Group", false}}};
    const std::string page = ManPage({Program(), command}, "1.2");
    EXPECT_NE(page.find(".TP\n\\fB\\-\\-x\\fR \\fIA|B\\fR\n\\&.start 'a' \\e \\-1 (default 2)\n"),
              std::string::npos)
        << page;
}

TEST(ZshCompletion, EscapesBracketsColonsAndQuotes) {
    const CommandEntry command = {
        "clean", "it", {{{"-x", "--xx"}, "a:B|c", "it's [1]: x", "", "Group", false}}};
    const std::string script = ZshCompletion({Program(), command});
    EXPECT_NE(script.find("'(-x --xx)'{-x,--xx}'[it'\\''s \\[1\\]\\: x]:a\\:B|c:(a\\: c)'"),
              std::string::npos)
        << script;
}

TEST(FishCompletion, EscapesQuotes) {
    const CommandEntry command = {
        "clean", "it", {{{"-x", "--xx"}, "FILE", "it's", "", "Group", false}}};
    const std::string script = FishCompletion({Program(), command});
    EXPECT_NE(script.find("complete -c audio-filter -n '__fish_seen_subcommand_from clean' -s x -l "
                          "xx -r -F -d 'it\\'s'\n"),
              std::string::npos)
        << script;
}

}  // namespace
