#include "host/command_line.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <ostream>
#include <string>
#include <utility>

#include "host/clean_command.h"
#include "host/console.h"
#include "host/info_command.h"
#include "host/microphone/microphone_command.h"
#include "host/options.h"

namespace {

/// A remark on a command line without a subcommand; empty for another.
std::string SubcommandHint(const CLI::App& app, int argc, const char* const* argv) {
    const auto isFirst = [argv](const CLI::App* command) { return command->check_name(argv[1]); };
    if (argc < 2 || !app.get_subcommands(isFirst).empty()) {
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
        const Console console = {out, err, std::move(progress)};
        return app.got_subcommand("info")         ? RunInfo(arguments, console)
               : app.got_subcommand("mix")        ? RunMix(arguments, console)
               : app.got_subcommand("microphone") ? RunMicrophone(arguments, console)
                                                  : RunClean(arguments, console);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {  // --help and --version
            app.exit(error, out, err);
            return kDone;
        }
        const std::string hint = SubcommandHint(app, argc, argv);
        err << "audio-filter: " + FirstLine(hint.empty() ? error.what() : hint) + "\n";
        return kUsageError;
    } catch (const std::exception& error) {
        err << "audio-filter: " + FirstLine(error.what()) + "\n";
        return kFailure;
    }
}
