#include "host/help/man_page.h"

#include <algorithm>
#include <cctype>

#include "host/help/wrap_text.h"

namespace {

constexpr const char* kManDescription =
    R"(.SH DESCRIPTION
.B audio\-filter
cleans up recordings of speech: it inverts a left channel that is reversed,
mixes sources, suppresses noise and shapes the level.
The output has the rate, the channels and the length of the input, and appears
whole or not at all.
.PP
With
.BR \-o ,
.B clean
writes one output.
With
.B \-\-output\-dir
or
.B \-\-suffix
it writes an output for each of many files, several at a time, goes on past
failures and ends with a list of them.
Such outputs never replace files unless
.B \-\-force
is given.
)";

constexpr const char* kManEnd =
    R"(.SH EXIT STATUS
.TP
.B 0
Everything has been done.
.TP
.B 1
A file cannot be cleaned, an output cannot be written, or the virtual
microphone is not installed.
.TP
.B 2
The command line cannot be parsed.
.PP
SIGINT, SIGTERM and SIGHUP remove unfinished outputs and then end the process
by the signal.
While a pipe is being read, the first signal ends the recording instead and
completes the output.
.SH EXAMPLES
.TP
audio\-filter clean talk.wav \-o clean.wav
Clean a recording.
.TP
audio\-filter clean \-r talks \-\-output\-dir cleaned \-\-skip\-existing
Clean all recordings in a folder, or continue to.
.TP
audio\-filter clean *.flac \-\-suffix \-clean \-\-loudness \-16
Clean files into files beside them, at the loudness of podcasts.
.TP
audio\-filter mix talk.wav music.flac \-o mix.wav
Clean two recordings and mix them.
.TP
audio\-filter microphone install
Add a microphone without noise to those of PipeWire.
.TP
arecord \-f S16_LE \-r 48000 | audio\-filter clean \- \-\-wav \-o \- | aplay
Clean a microphone live.
)";

constexpr std::size_t kManColumns = 79;

/// As text of roff: backslashes and dashes are escaped, and full stops and quotes where a line begins.
std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        escaped += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    std::string lines = WrapText(escaped, kManColumns);
    for (std::size_t at = 0; at != std::string::npos; at = lines.find('\n', at)) {
        at += at == 0 ? 0 : 1;
        if (lines[at] == '.' || lines[at] == '\'') {
            lines.insert(at, "\\&");
        }
    }
    return lines;
}

std::string Upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

/// "-o, --output FILE" with bold names and an italic form.
std::string Heading(const OptionEntry& option) {
    std::string heading;
    for (const std::string& name : option.names) {
        heading += (heading.empty() ? "\\fB" : ", \\fB") + Escaped(name) + "\\fR";
    }
    const std::string separator = heading.empty() || option.form.empty() ? "" : " ";
    return heading + separator +
           (option.form.empty() ? "" : "\\fI" + Escaped(option.form) + "\\fR");
}

std::string Paragraph(const OptionEntry& option) {
    const std::string standard =
        option.standard.empty() ? "" : " (default " + option.standard + ")";
    return ".TP\n" + Heading(option) + "\n" + Escaped(option.text + standard) + "\n";
}

/// "FILE..."
std::string PositionalArguments(const CommandEntry& command) {
    std::string text;
    for (const OptionEntry& option : command.options) {
        if (option.names.empty()) {
            text += " \\fI" + Escaped(option.form) + "\\fR" + (option.repeats ? "..." : "");
        }
    }
    return text;
}

std::string Synopsis(const std::vector<CommandEntry>& table) {
    std::string text = ".SH SYNOPSIS\n";
    const std::string program = Escaped(table.front().name);
    for (std::size_t i = 1; i < table.size(); ++i) {
        text += (i == 1 ? "" : ".br\n") + (".B " + program) + " " + table[i].name +
                "\n[\\fIOPTIONS\\fR]" + PositionalArguments(table[i]) + "\n";
    }
    return text;
}

/// @param earlier commands whose options are not explained again
std::string Command(const CommandEntry& command, const std::vector<CommandEntry>& earlier) {
    std::string text = ".SS " + Escaped(command.name) + "\n" + Escaped(command.text) + ".\n";
    std::string group;
    std::string shared;
    for (const OptionEntry& option : command.options) {
        const bool isKnown =
            !option.names.empty() &&
            std::any_of(earlier.begin(), earlier.end(), [&option](const CommandEntry& other) {
                return std::find(other.options.begin(), other.options.end(), option) !=
                       other.options.end();
            });
        if (isKnown) {
            shared +=
                (shared.empty() ? "" : ",\n") + ("\\fB" + Escaped(option.names.back())) + "\\fR";
            continue;
        }
        if (option.group != group && !option.names.empty()) {
            group = option.group;
            text += ".PP\n" + Escaped(group) + ":\n";
        }
        text += Paragraph(option);
    }
    return text + (shared.empty() ? "" : ".PP\nAs above:\n" + shared + ".\n");
}

}  // namespace

std::string ManPage(const std::vector<CommandEntry>& table, const std::string& version) {
    const CommandEntry& program = table.front();
    std::string text = ".TH " + Escaped(Upper(program.name)) + R"( 1 "" ")" + program.name + " " +
                       version + "\" \"User Commands\"\n";
    text += ".SH NAME\n" + Escaped(program.name) + " \\- " + Escaped(program.text) + "\n";
    text += Synopsis(table) + kManDescription + ".SH OPTIONS\n";
    for (const OptionEntry& option : program.options) {
        text += Paragraph(option);
    }
    text += ".SH COMMANDS\n";
    std::vector<CommandEntry> earlier = {program};
    for (std::size_t i = 1; i < table.size(); ++i) {
        text += Command(table[i], earlier);
        earlier.push_back(table[i]);
    }
    return text + kManEnd;
}
