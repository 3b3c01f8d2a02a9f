#include "host/command_line.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <ostream>
#include <string>

#include "host/clean.h"
#include "host/failure.h"
#include "host/report.h"

namespace {

constexpr int kFailed = 1;
constexpr int kNotUnderstood = 2;

struct Arguments {
    CleanJob job;
    std::string denoise = "3";
    std::string gain = "off";
    std::string phaseCheck = "on";
    bool json = false;
    bool quiet = false;
};

/// Takes "off" or a number from 0 to `highest`, whole or not.
template <typename Number>
CLI::Validator OffOrUpTo(Number highest, const std::string& description) {
    const auto check = [highest](const std::string& text) {
        Number number = 0;
        const bool good = text == "off" || (CLI::detail::lexical_cast(text, number) &&
                                            number >= 0 && number <= highest);
        return good ? std::string()
                    : "'" + text + "' is neither off nor in 0.." + std::to_string(highest);
    };
    return CLI::Validator(check, description);
}

void Declare(CLI::App& app, Arguments& arguments) {
    app.name("audio-filter");
    app.set_version_flag("--version", std::string(AUDIO_FILTER_VERSION));
    app.require_subcommand(1);

    CLI::App& clean = *app.add_subcommand("clean", "Clean a recording");
    clean.add_option("IN", arguments.job.input, "WAV, FLAC or Ogg file, mono or stereo")
        ->required();
    clean.add_option("-o,--output", arguments.job.output, "WAV or FLAC file to write")->required();
    clean
        .add_option("--denoise", arguments.denoise,
                    "noise suppression: 0 mild to 3 most aggressive")
        ->check(OffOrUpTo(3, "LEVEL 0..3|off"))
        ->capture_default_str();
    clean.add_option("--gain", arguments.gain, "strength of the gain curve")
        ->check(OffOrUpTo(1.0F, "GAIN 0..1|off"))
        ->capture_default_str();
    clean.add_option("--phase-check", arguments.phaseCheck, "correct a reversed left channel")
        ->check(CLI::IsMember({"on", "off"}))
        ->capture_default_str();
    clean.add_option("--block-ms", arguments.job.blockMs, "how much to process at a time, in ms")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    clean.add_flag("--json", arguments.json, "print the summary as one JSON object");
    clean.add_flag("--quiet", arguments.quiet, "print no progress and no table");
}

CleanJob JobOf(const Arguments& arguments) {
    CleanJob job = arguments.job;
    job.settings.denoiseLevel.reset();
    if (arguments.denoise != "off") {
        job.settings.denoiseLevel = std::stoi(arguments.denoise);
    }
    if (arguments.gain != "off") {
        job.settings.gain = std::stof(arguments.gain);
    }
    job.settings.phaseCheck = arguments.phaseCheck == "on";
    return job;
}

std::string FirstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

}  // namespace

int RunCommandLine(int argc, const char* const* argv, std::ostream& out, std::ostream& err,
                   std::ostream* progress) {
    CLI::App app("Cleans up recordings: phase check, noise suppression, gain");
    Arguments arguments;
    Declare(app, arguments);
    try {
        app.parse(argc, argv);
        const Report report = Clean(JobOf(arguments), arguments.quiet ? nullptr : progress);
        if (arguments.json) {
            PrintJson(out, report);
        } else if (!arguments.quiet) {
            PrintTable(out, report);
        }
        return 0;
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {  // --help and --version
            app.exit(error, out, err);
            return 0;
        }
        err << "audio-filter: " << FirstLine(error.what()) << "\n";
        return kNotUnderstood;
    } catch (const std::exception& error) {
        err << "audio-filter: " << FirstLine(error.what()) << "\n";
        return kFailed;
    }
}
