#include "host/help/pages.h"

#include <CLI/CLI.hpp>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

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

void WritePages(const std::filesystem::path& folder) {
    CLI::App app;
    Arguments arguments;
    Declare(app, arguments);
    const std::vector<CommandEntry> table = CommandTable(app);
    WritePage(folder / "man/man1/audio-filter.1", ManPage(table, app.version()));
    WritePage(folder / "bash-completion/completions/audio-filter", BashCompletion(table));
    WritePage(folder / "zsh/site-functions/_audio-filter", ZshCompletion(table));
    WritePage(folder / "fish/vendor_completions.d/audio-filter.fish", FishCompletion(table));
}
