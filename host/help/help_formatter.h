#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// Formats --help: the form of an option's value behind its name, its default behind the description, in lines
/// that fit a terminal.
class HelpFormatter : public CLI::Formatter {
public:
    std::string make_option_opts(const CLI::Option* option) const override;
    std::string make_option_desc(const CLI::Option* option) const override;
};
