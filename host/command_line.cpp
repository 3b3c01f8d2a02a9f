#include "host/command_line.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <ostream>
#include <sstream>
#include <string>

#include "host/clean_arguments.h"
#include "host/options.h"
#include "host/report.h"

namespace {

constexpr int kFailed = 1;
constexpr int kUsageError = 2;

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
    CLI::App app;
    Arguments arguments;
    Declare(app, arguments);
    try {
        app.parse(argc, argv);
        CleanJob job = JobOf(arguments);
        std::string warnings;
        job.reading.warn = [&](const std::string& line) {
            warnings += "audio-filter: warning: " + line + "\n";
        };
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
