#include "host/options.h"

#include <CLI/CLI.hpp>

#include "host/at_option.h"
#include "host/option_values.h"
#include "host/raw_stream.h"

namespace {

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

void DeclareInput(CLI::App& command, Arguments& arguments) {
    command.add_option(
        "IN", arguments.files,
        "WAV, FLAC or Ogg files, mono or stereo; the first is the microphone, the others are "
        "further sources; - for standard input");
    command
        .add_option("--source", arguments.sources,
                    "another file; TYPE is its source type: microphone, 1, 2 or 3")
        ->check(Parsed(ParseSource, "TYPE=FILE"))
        ->allow_extra_args(false);
    command
        .add_option("--raw", arguments.raw,
                    "- as input is raw samples of this format; without it, a file")
        ->check(Parsed(ParseRawFormat, "s16|f32:RATE:CHANNELS"));
    command.add_flag("--strict", arguments.job.reading.strict,
                     "refuse inputs that end early, instead of a warning");
}

void DeclareOutput(CLI::App& command, Arguments& arguments) {
    command
        .add_option("-o,--output", arguments.job.output,
                    "WAV or FLAC file to write; - for standard output")
        ->required();
    command.add_flag("--wav", arguments.job.wavStream,
                     "- as output is a WAV stream; without it, raw samples");
}

void DeclareSettings(CLI::App& command, Arguments& arguments) {
    command
        .add_option("--denoise", arguments.denoise,
                    "suppression level, 0 mild to 3 most aggressive")
        ->check(SettingOf("denoise", "LEVEL 0..3|off"))
        ->capture_default_str();
    command
        .add_option("--gain", arguments.gain,
                    "strength of a fixed curve that shapes the waveform (19 % distortion of a sine "
                    "of -6 dBFS "
                    "at 1); not a loudness target")
        ->check(SettingOf("gain", "GAIN 0..1|off"))
        ->capture_default_str();
    command
        .add_option("--phase-check", arguments.phaseCheck,
                    "invert the left channel where it is reversed: from the first reversed frame "
                    "(file) or from the verdict on, seconds later (live)")
        ->check(SettingOf("phase-check", "file|live|off"))
        ->capture_default_str();
    command.add_option("--mix", arguments.mix, "mix all sources, or process the first one alone")
        ->check(SettingOf("mix", "on|off"))
        ->capture_default_str();
    command
        .add_option("--music", arguments.music,
                    "ignore, or keep: suppress noise at level 0 while music is detected")
        ->check(SettingOf("music", "ignore|keep"))
        ->capture_default_str();
    command
        .add_option("--at", arguments.changes,
                    "change settings in mid-stream: at 3.5:denoise=off,gain=0.4 or 1:02:03:mix=off "
                    "(h:m:s); repeatable")
        ->check(CLI::Validator(ExplainAt, "TIME:SETTING=VALUE,..."))
        ->allow_extra_args(false);
    command
        .add_option("--block-ms", arguments.blockMs,
                    "length of the blocks passed to the filter, in ms")
        ->check(Parsed(BlockSizes::Parse, "1..1000|random:SEED"))
        ->capture_default_str();
}

void DeclareSummary(CLI::App& command, Arguments& arguments) {
    CLI::Option* log =
        command.add_option("--log", arguments.job.log, "file for log lines; - for standard error");
    command.add_option("--log-level", arguments.logLevel, "lowest level of the lines in the log")
        ->check(Parsed(ParseLogLevel, "debug|info|warn|error"))
        ->needs(log)
        ->capture_default_str();
    command.add_flag("--json", arguments.json, "print the summary as one JSON object");
    command.add_flag("--quiet", arguments.quiet, "print no progress and no table");
}

/// Of an option given several times the last one counts, except for lists.
void TakeLast(CLI::App& command) {
    for (CLI::Option* option : command.get_options()) {
        if (option->get_expected_max() == 1) {
            option->take_last();
        }
    }
}

}  // namespace

void Declare(CLI::App& app, Arguments& arguments) {
    app.name("audio-filter");
    app.description("Cleans up recordings: phase check, mixing, noise suppression, gain");
    app.set_version_flag("--version", std::string(AUDIO_FILTER_VERSION));
    app.require_subcommand(1);

    CLI::App& clean = *app.add_subcommand("clean", "Clean a recording");
    DeclareInput(clean, arguments);
    DeclareOutput(clean, arguments);
    DeclareSettings(clean, arguments);
    DeclareSummary(clean, arguments);
    TakeLast(clean);
}
