#include "host/options.h"

#include <CLI/CLI.hpp>

#include "host/at_option.h"
#include "host/help/help_formatter.h"
#include "host/media_extensions.h"
#include "host/option_values.h"
#include "host/output_options.h"
#include "host/raw_stream.h"

namespace {

/// Declares an option whose value has a form.
template <typename Value>
CLI::Option* Add(CLI::App& command, const std::string& names, Value& value, const std::string& form,
                 const std::string& text) {
    return command.add_option(names, value, text)->type_name(form);
}

/// Accepts values that `parse` accepts.
template <typename Parse>
void Check(CLI::Option* option, const Parse& parse) {
    const std::string form = option->get_type_name();
    option->check([parse, form](const std::string& text) {
        return parse(text) ? std::string() : "'" + text + "' is not " + form;
    });
}

/// Declares a setting of the filter.
void AddSetting(CLI::App& command, const std::string& name, std::string& value,
                const std::string& form, const std::string& text) {
    CLI::Option* const option = Add(command, "--" + name, value, form, text)->capture_default_str();
    Check(option, [name](const std::string& given) {
        FilterSettings scratch;
        return ApplySetting(scratch, name, given);
    });
}

/// The options declared since the last call form a group of --help.
void Group(CLI::App& command, const std::string& name) {
    for (CLI::Option* option : command.get_options()) {
        if (option != command.get_help_ptr() && option->get_group() == "Options") {
            option->group(name);
        }
    }
}

void DeclareInput(CLI::App& command, Arguments& arguments, const std::string& files) {
    Add(command, "FILE", arguments.files, "", files);
    CLI::Option* const source =
        Add(command, "--source", arguments.sources, "TYPE=FILE",
            "mix in another file; TYPE is its source type: microphone, 1, 2 or 3; repeatable")
            ->allow_extra_args(false);
    Check(source, ParseSource);
    Check(Add(command, "--raw", arguments.raw, "s16:RATE:CHANNELS|f32:RATE:CHANNELS",
              "- as input is raw samples of this format; without it, a file"),
          ParseRawFormat);
    Check(Add(command, "--track", arguments.track, "N|all",
              "audio track to clean, counted from 1, or all; without it, the default one"),
          ParseTrack);
    command.add_flag("--strict", arguments.job.reading.strict,
                     "refuse inputs that end early, instead of a warning");
    Group(command, "Input");
}

void DeclareOutput(CLI::App& command, Arguments& arguments) {
    Add(command, "-o,--output", arguments.output, "FILE",
        "file to write, in the format that its extension names, replaced if it exists; - for "
        "standard output");
    command.add_flag("--wav", arguments.job.wavStream,
                     "- as output is a WAV stream; without it, raw samples");
    Add(command, "--codec", arguments.job.encoding.codec, "NAME",
        "codec of the output: pcm, flac, aac, mp3, opus, vorbis, ...; without it, that of the "
        "input if the file can hold it");
    Check(Add(command, "--bitrate", arguments.bitRate, "BIT/S",
              "bit rate of a lossy output, such as 128k; without it, about that of the input"),
          ParseBitRate);
    Check(Add(command, "--bits", arguments.bits, "16|24|float",
              "sample format of a lossless output; without it, that of the input"),
          ParseBits);
    CLI::Option* const force =
        command.add_flag("--force", arguments.force, "replace outputs that exist");
    command
        .add_flag("--no-clobber", arguments.noClobber,
                  "refuse outputs that exist; the default for many files")
        ->excludes(force);
    Group(command, "Output");
}

void DeclareManyFiles(CLI::App& command, Arguments& arguments) {
    Add(command, "--output-dir", arguments.outputDir, "DIR",
        "write an output for each file into this folder");
    Add(command, "--suffix", arguments.suffix, "TEXT",
        "write an output for each file with this text behind its name, beside it or in "
        "--output-dir");
    Add(command, "--to", arguments.to, "wav|flac|ogg|opus|mp3|m4a|mp4|mkv",
        "extension of the outputs; without it, that of each input if it can be written, else wav")
        ->check([](const std::string& text) {
            return OutputExtension("x." + text) == "." + text
                       ? std::string()
                       : "'" + text + "' cannot be written by this build";
        });
    command.add_flag("-r,--recursive", arguments.recursive,
                     "clean the recordings in folders and their subfolders");
    Add(command, "-j,--jobs", arguments.jobs, "N", "files to clean at a time")
        ->check(CLI::Range(1, 1024).description(""))
        ->default_str("cores");
    command.add_flag("--skip-existing", arguments.skipExisting,
                     "skip files whose output exists, to continue an interrupted run");
    command.add_flag("-n,--dry-run", arguments.dryRun, "print what would be done, and do nothing");
    Group(command, "Many files");
}

void DeclareSuppressionAndGain(CLI::App& command, Arguments& arguments) {
    AddSetting(command, "denoise", arguments.denoise, "0|1|2|3|off",
               "suppression level, 0 mild to 3 most aggressive");
    AddSetting(command, "gain", arguments.gain, "0..1|off",
               "strength of a fixed curve that shapes the waveform (19 % distortion of a sine of "
               "-6 dBFS at 1); not a loudness target");
}

void DeclareMusic(CLI::App& command, Arguments& arguments) {
    AddSetting(command, "music", arguments.music, "ignore|keep",
               "ignore, or keep: suppress noise at level 0 while music is detected");
}

void DeclareSettings(CLI::App& command, Arguments& arguments) {
    DeclareSuppressionAndGain(command, arguments);
    AddSetting(command, "phase-check", arguments.phaseCheck, "file|live|off",
               "invert the left channel where it is reversed: from the first reversed frame "
               "(file) or from the verdict on, seconds later (live)");
    AddSetting(command, "mix", arguments.mix, "on|off",
               "mix all sources, or process the first one alone");
    DeclareMusic(command, arguments);
    CLI::Option* const at =
        Add(command, "--at", arguments.changes, "TIME:SETTING=VALUE,...",
            "change settings in mid-stream: at 3.5:denoise=off,gain=0.4 or 1:02:03:mix=off "
            "(h:m:s); repeatable")
            ->allow_extra_args(false);
    at->check(ExplainAt);
    Check(Add(command, "--loudness", arguments.loudness, "LUFS|off",
              "loudness of the output, -70 to -5 LUFS by EBU R 128; the true peak stays below -1 "
              "dBTP")
              ->capture_default_str(),
          ParseLoudness);
    Check(Add(command, "--block-ms", arguments.blockMs, "MS|random:SEED",
              "length of the blocks passed to the filter, 1 to 1000 ms; no effect on the output")
              ->capture_default_str(),
          BlockSizes::Parse);
    Group(command, "Processing");
}

void DeclareMicrophone(CLI::App& command, Arguments& arguments) {
    Add(command, "ACTION", arguments.action, "install|remove|status",
        "install the configuration, remove it, or show whether it is installed and runs")
        ->check(CLI::IsMember({"install", "remove", "status"}).description(""));
    Add(command, "--from", arguments.microphoneSource, "NODE",
        "microphone to clean, by the name of its PipeWire node; without it, the default one");
    Group(command, "Installation");
    DeclareSuppressionAndGain(command, arguments);
    DeclareMusic(command, arguments);
    Group(command, "Processing");
}

void DeclareSummary(CLI::App& command, Arguments& arguments) {
    CLI::Option* const log = Add(command, "--log", arguments.job.log, "FILE",
                                 "write log lines to a file; - for standard error");
    CLI::Option* const level = Add(command, "--log-level", arguments.logLevel,
                                   "debug|info|warn|error", "lowest level of the lines in the log")
                                   ->needs(log)
                                   ->capture_default_str();
    Check(level, ParseLogLevel);
    Add(command, "--report", arguments.job.reportPage, "FILE",
        "HTML page to write: spectrograms, sounds, levels and events");
    Add(command, "--spectrogram", arguments.job.spectrogram, "FILE",
        "PNG picture to write: spectrograms before, after and of what was removed");
    command.add_flag("--json", arguments.json,
                     "print the summary as one JSON object; of many files, one line a file");
    command.add_flag("--no-stats", arguments.noStats, "measure no levels and print no table");
    command.add_flag("-q,--quiet", arguments.quiet, "print no progress and no table");
    Group(command, "Summary");
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
    app.formatter(std::make_shared<HelpFormatter>());

    CLI::App& clean = *app.add_subcommand("clean", "Clean a recording, or many");
    DeclareInput(
        clean, arguments,
        "recordings to clean: sound or video files of 1 to 8 channels; - for standard input");
    DeclareOutput(clean, arguments);
    DeclareManyFiles(clean, arguments);
    DeclareSettings(clean, arguments);
    DeclareSummary(clean, arguments);

    CLI::App& mix = *app.add_subcommand("mix", "Clean several recordings and mix them into one");
    DeclareInput(mix, arguments,
                 "sources: the first is the microphone and sets rate and channels; - for standard "
                 "input");
    DeclareOutput(mix, arguments);
    DeclareSettings(mix, arguments);
    DeclareSummary(mix, arguments);

    CLI::App& info =
        *app.add_subcommand("info", "Show what is in files, and what cleaning would do with them");
    Add(info, "FILE", arguments.files, "", "recordings");
    info.add_flag("--scan", arguments.scan,
                  "read the files to their end, which finds damage and unstated lengths");
    info.add_flag("--json", arguments.json, "print one line of JSON a file");
    DeclareSettings(info, arguments);

    DeclareMicrophone(
        *app.add_subcommand("microphone",
                            "Install a virtual microphone, \"Clean microphone\", in PipeWire"),
        arguments);

    for (CLI::App* command : app.get_subcommands({})) {
        TakeLast(*command);
    }
}
