#include "host/help_formatter.h"

#include <sstream>

namespace {

constexpr std::size_t kLineColumns = 80;

std::string Wrapped(const std::string& text, std::size_t columns) {
    std::istringstream words(text);
    std::string wrapped;
    std::size_t column = 0;
    for (std::string word; words >> word;) {
        const bool breaks = column > 0 && column + 1 + word.size() > columns;
        wrapped += column == 0 ? "" : breaks ? "\n" : " ";
        column = breaks || column == 0 ? word.size() : column + 1 + word.size();
        wrapped += word;
    }
    return wrapped;
}

}  // namespace

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
    const bool hasValue = option->get_type_size() != 0 && !option->get_type_name().empty();
    return hasValue ? " " + option->get_type_name() : "";
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const {
    const std::string& standard = option->get_default_str();
    const std::string text =
        option->get_description() + (standard.empty() ? "" : " (default " + standard + ")");
    return Wrapped(text, kLineColumns - get_column_width());
}
