#include "host/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <exception>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "host/at_option.h"
#include "host/clean.h"
#include "host/failure.h"
#include "host/raw_stream.h"
#include "host/report.h"
#include "host/terminal.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsageError = 2;

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

/// Accepts text that `parse` accepts.
template <typename Parse>
CLI::Validator Parsed(const Parse& parse, const std::string& form) {
    const auto check = [parse, form](const std::string& text) {
        return parse(text) ? std::string() : "'" + text + "' is not " + form;
    };
    return CLI::Validator(check, form);
}

/// Accepts the values of a setting.
CLI::Validator SettingOf(const std::string& name, const std::string& form) {
    const auto parse = [name](const std::string& text) {
        FilterSettings scratch;
        return ApplySetting(scratch, name, text);
    };
    return Parsed(parse, form);
}

/// Reads "microphone=talk.wav", "0=talk.wav" or "2=bed.ogg".
std::optional<InputFile> ParseSource(const std::string& text) {
    const std::size_t equals = text.find('=');
    const std::string type = text.substr(0, equals);
    if (equals == std::string::npos || equals + 1 == text.size()) {
        return std::nullopt;
    }
    const InputFile input = {text.substr(equals + 1), AV_SOURCE_MICROPHONE};
    if (type == "microphone") {
        return input;
    }
    if (type.size() != 1 || type[0] < '0' || type[0] > '3') {
        return std::nullopt;
    }
    return InputFile{input.path, static_cast<AVSourceType>(type[0] - '0')};
}

std::optional<ProcessLogLevel> ParseLogLevel(const std::string& text) {
    constexpr std::array<const char*, 4> kNames = {"debug", "info", "warn", "error"};
    const auto* const name = std::find(kNames.begin(), kNames.end(), text);
    if (name == kNames.end()) {
        return std::nullopt;
    }
    return static_cast<ProcessLogLevel>(PROCESS_LOG_DEBUG + (name - kNames.begin()));
}

void Declare(CLI::App& app, Arguments& arguments) {
    app.name("audio-filter");
    app.set_version_flag("--version", std::string(AUDIO_FILTER_VERSION));
    app.require_subcommand(1);

    CLI::App& clean = *app.add_subcommand("clean", "Clean a recording");
    clean.add_option(
        "IN", arguments.files,
        "WAV, FLAC or Ogg files, mono or stereo; the first is the microphone, the others are "
        "further sources; - for standard input");
    clean
        .add_option("--source", arguments.sources,
                    "another file; TYPE is its source type: microphone, 1, 2 or 3")
        ->check(Parsed(ParseSource, "TYPE=FILE"))
        ->allow_extra_args(false);
    clean
        .add_option("-o,--output", arguments.job.output,
                    "WAV or FLAC file to write; - for standard output")
        ->required();
    clean
        .add_option("--raw", arguments.raw,
                    "- as input is raw samples of this format; without it, a file")
        ->check(Parsed(ParseRawFormat, "s16|f32:RATE:CHANNELS"));
    clean.add_flag("--wav", arguments.job.wavStream,
                   "- as output is a WAV stream; without it, raw samples");
    clean.add_flag("--strict", arguments.job.reading.strict,
                   "refuse inputs that end early, instead of a warning");
    clean
        .add_option("--denoise", arguments.denoise,
                    "suppression level, 0 mild to 3 most aggressive")
        ->check(SettingOf("denoise", "LEVEL 0..3|off"))
        ->capture_default_str();
    clean
        .add_option("--gain", arguments.gain,
                    "strength of a fixed curve that shapes the waveform (19 % distortion of a sine "
                    "of -6 dBFS "
                    "at 1); not a loudness target")
        ->check(SettingOf("gain", "GAIN 0..1|off"))
        ->capture_default_str();
    clean
        .add_option("--phase-check", arguments.phaseCheck,
                    "invert the left channel where it is reversed: from the first reversed frame "
                    "(file) or from the verdict on, seconds later (live)")
        ->check(SettingOf("phase-check", "file|live|off"))
        ->capture_default_str();
    clean.add_option("--mix", arguments.mix, "mix all sources, or process the first one alone")
        ->check(SettingOf("mix", "on|off"))
        ->capture_default_str();
    clean
        .add_option("--music", arguments.music,
                    "ignore, or keep: suppress noise at level 0 while music is detected")
        ->check(SettingOf("music", "ignore|keep"))
        ->capture_default_str();
    clean
        .add_option("--at", arguments.changes,
                    "change settings in mid-stream: at 3.5:denoise=off,gain=0.4 or 1:02:03:mix=off "
                    "(h:m:s); repeatable")
        ->check(CLI::Validator(ExplainAt, "TIME:SETTING=VALUE,..."))
        ->allow_extra_args(false);
    clean
        .add_option("--block-ms", arguments.blockMs,
                    "length of the blocks passed to the filter, in ms")
        ->check(Parsed(BlockSizes::Parse, "1..1000|random:SEED"))
        ->capture_default_str();
    CLI::Option* log =
        clean.add_option("--log", arguments.job.log, "file for log lines; - for standard error");
    clean.add_option("--log-level", arguments.logLevel, "lowest level of the lines in the log")
        ->check(Parsed(ParseLogLevel, "debug|info|warn|error"))
        ->needs(log)
        ->capture_default_str();
    for (CLI::Option* option : clean.get_options()) {
        if (option->get_expected_max() == 1) {  // not a list: the last one wins
            option->take_last();
        }
    }
    clean.add_flag("--json", arguments.json, "print the summary as one JSON object");
    clean.add_flag("--quiet", arguments.quiet, "print no progress and no table");
}

CleanJob JobOf(const Arguments& arguments) {
    CleanJob job = arguments.job;
    if (job.output == "/dev/stdout") {
        job.output = "-";
    }
    for (const std::string& file : arguments.files) {
        const auto type = static_cast<AVSourceType>(std::min<std::size_t>(job.inputs.size(), 3));
        job.inputs.push_back({file, type});
    }
    for (const std::string& source : arguments.sources) {
        job.inputs.push_back(*ParseSource(source));
    }
    for (InputFile& input : job.inputs) {
        input.path = input.path == "/dev/stdin" ? "-" : input.path;
    }
    ApplySetting(job.settings, "denoise", arguments.denoise);
    ApplySetting(job.settings, "gain", arguments.gain);
    ApplySetting(job.settings, "phase-check", arguments.phaseCheck);
    ApplySetting(job.settings, "mix", arguments.mix);
    ApplySetting(job.settings, "music", arguments.music);
    for (const std::string& change : arguments.changes) {
        job.changes.push_back(*ParseAt(change));
    }
    std::stable_sort(job.changes.begin(), job.changes.end(),
                     [](const auto& a, const auto& b) { return a.seconds < b.seconds; });
    job.blockSizes = *BlockSizes::Parse(arguments.blockMs);
    job.raw = ParseRawFormat(arguments.raw);
    job.summarises = arguments.json || !arguments.quiet;
    job.logLevel = *ParseLogLevel(arguments.logLevel);
    return job;
}

/// Checks that involve several options. Throws CLI::ValidationError.
void CheckCombination(const CleanJob& job, bool json) {
    constexpr std::size_t kMostInputs = 16;
    const auto piped = std::count_if(job.inputs.begin(), job.inputs.end(),
                                     [](const InputFile& input) { return input.path == "-"; });
    if (job.inputs.empty()) {
        throw CLI::ValidationError("IN", "is required");
    }
    if (job.inputs.size() > kMostInputs) {
        throw CLI::ValidationError("IN", "at most 16 sources can be mixed");
    }
    if (piped > 1) {
        throw CLI::ValidationError("IN", "standard input can be only one of the sources");
    }
    if (job.wavStream && job.output != "-") {
        throw CLI::ValidationError("--wav", "is for -o - only");
    }
    if (piped == 1 && IsInputATerminal()) {
        throw CLI::ValidationError("IN", "standard input is a terminal: redirect it");
    }
    if (job.output == "-" && IsOutputATerminal()) {
        throw CLI::ValidationError("--output",
                                   "standard output is a terminal: redirect it, or name a file");
    }
    if (job.output == "-" && json) {
        throw CLI::ValidationError("--json", "standard output carries the samples");
    }
}

/// A remark on a command line without a subcommand; empty for another.
std::string SubcommandHint(int argc, const char* const* argv) {
    const std::string first = argc > 1 ? argv[1] : "clean";
    if (first == "clean") {
        return "";
    }
    std::string line = "audio-filter clean";
    for (int i = 1; i < argc; ++i) {
        line += " " + std::string(argv[i]);
    }
    return "a subcommand is missing: did you mean '" + line + "'?";
}

std::string FirstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

}  // namespace

int RunCommandLine(int argc, const char* const* argv, std::ostream& out, std::ostream& err,
                   ProgressOutput progress) {
    CLI::App app("Cleans up recordings: phase check, mixing, noise suppression, gain");
    Arguments arguments;
    Declare(app, arguments);
    try {
        app.parse(argc, argv);
        CleanJob job = JobOf(arguments);
        std::string warnings;
        job.reading.warn = [&](const std::string& line) {
            warnings += "audio-filter: warning: " + line + "\n";
        };
        CheckCombination(job, arguments.json);
        progress.label = "audio-filter: " + job.inputs.front().path;
        if (arguments.quiet || job.log == "-") {  // a bar would cut log lines
            progress.out = nullptr;
        }
        const Report report = Clean(job, progress);
        err << warnings;
        std::ostringstream summary;
        if (arguments.json) {
            PrintJson(summary, report);
        } else if (!arguments.quiet) {
            PrintTable(summary, report);
        }
        (job.output == "-" ? err : out) << summary.str();
        return 0;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {  // --help and --version
            app.exit(error, out, err);
            return 0;
        }
        const std::string hint = SubcommandHint(argc, argv);
        err << "audio-filter: " + FirstLine(hint.empty() ? error.what() : hint) + "\n";
        return kUsageError;
    } catch (const std::exception& error) {
        err << "audio-filter: " + FirstLine(error.what()) + "\n";
        return kFailed;
    }
}
