#include "host/microphone/microphone_command.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <ostream>
#include <string>

#include "host/clean_arguments.h"
#include "host/failure.h"
#include "host/microphone/environment.h"
#include "host/microphone/filter_chain.h"
#include "host/microphone/lv2_bundle.h"
#include "host/microphone/pipewire_nodes.h"
#include "host/partial_file.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kRestart =
    "restart PipeWire to apply it: systemctl --user restart pipewire\n";

/// By the rules for XDG base directories, relative paths count as unset.
fs::path ConfigFolder() {
    fs::path config = Environment("XDG_CONFIG_HOME");
    if (config.is_absolute()) {
        return config;
    }
    const fs::path home = Environment("HOME");
    if (!home.is_absolute()) {
        throw Failure("neither XDG_CONFIG_HOME nor HOME is set");
    }
    return home / ".config";
}

fs::path ConfigFile() {
    return ConfigFolder() / "pipewire/pipewire.conf.d/audio_filter-clean-microphone.conf";
}

std::string WhereLv2Is() {
    std::string folders;
    for (const fs::path& folder : Lv2Folders()) {
        folders += (folders.empty() ? "" : ", ") + folder.string();
    }
    return "the LV2 plug-in audio_filter.lv2 is not in " + Failure::Printable(folders) +
           ": install it, or add its folder to LV2_PATH";
}

void Install(const Arguments& arguments, std::ostream& out) {
    const std::optional<fs::path> bundle = FindLv2Bundle();
    if (!bundle) {
        throw Failure(WhereLv2Is());
    }
    const fs::path path = ConfigFile();
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    if (error) {
        throw Failure(path.parent_path().string(), "cannot be created", error.value());
    }
    PartialFile file(path.string());
    file.Write(FilterChain(CommonJob(arguments).settings, arguments.microphoneSource));
    file.Commit();
    out << "installed: " + Failure::Printable(path.string()) +
               "\nplug-in:   " + Failure::Printable(bundle->string()) + "\n" + kRestart;
    if (!Environment("LV2_PATH").empty()) {
        out << "note: LV2_PATH is set here, and must be set for PipeWire, too\n";
    }
}

void Remove(std::ostream& out) {
    const fs::path path = ConfigFile();
    std::error_code error;
    const bool removed = fs::remove(path, error);
    if (error) {
        throw Failure(path.string(), "cannot be removed", error.value());
    }
    out << (removed ? "removed: " : "not installed: ") + Failure::Printable(path.string()) + "\n" +
               (removed ? kRestart : "");
}

int PrintStatus(std::ostream& out) {
    const fs::path path = ConfigFile();
    const std::optional<fs::path> bundle = FindLv2Bundle();
    std::error_code error;
    const bool installed = fs::is_regular_file(path, error);
    out << "installed: " + (installed ? Failure::Printable(path.string()) : "no") + "\n" +
               "plug-in:   " +
               (bundle ? Failure::Printable(bundle->string()) : "not found: " + WhereLv2Is()) +
               "\n" + "running:   ";
    switch (FindPipeWireNode("clean_microphone")) {
        case NodeState::kPresent: out << "yes\n"; break;
        case NodeState::kAbsent:
            out << "no" + std::string(installed ? ": restart PipeWire" : "") + "\n";
            break;
        case NodeState::kUnknown: out << "unknown: pw-dump does not reach PipeWire\n"; break;
    }
    return installed && bundle ? kDone : kFailure;
}

}  // namespace

int RunMicrophone(const Arguments& arguments, const Console& console) {
    if (arguments.action == "install") {
        Install(arguments, console.out);
        return kDone;
    }
    if (arguments.action == "remove") {
        Remove(console.out);
        return kDone;
    }
    if (arguments.action == "status") {
        return PrintStatus(console.out);
    }
    throw CLI::ValidationError("ACTION", "is required: install, remove or status");
}
