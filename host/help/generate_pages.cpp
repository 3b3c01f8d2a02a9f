// Writes the man page and the completions of audio-filter, at build time.

#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

#include "host/help/bash_completion.h"
#include "host/help/command_table.h"
#include "host/help/fish_completion.h"
#include "host/help/man_page.h"
#include "host/help/zsh_completion.h"
#include "host/options.h"

namespace {

void WritePage(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text << std::flush;
    if (!file) {
        throw std::runtime_error(path.string() + ": cannot be written");
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc != 2) {
            throw std::runtime_error("usage: generate_pages FOLDER");
        }
        CLI::App app;
        Arguments arguments;
        Declare(app, arguments);
        const std::vector<CommandEntry> table = CommandTable(app);
        const std::filesystem::path folder = argv[1];
        WritePage(folder / "man/man1/audio-filter.1", ManPage(table, app.version()));
        WritePage(folder / "bash-completion/completions/audio-filter", BashCompletion(table));
        WritePage(folder / "zsh/site-functions/_audio-filter", ZshCompletion(table));
        WritePage(folder / "fish/vendor_completions.d/audio-filter.fish", FishCompletion(table));
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "generate_pages: " << error.what() << "\n";
        return 1;
    }
}
