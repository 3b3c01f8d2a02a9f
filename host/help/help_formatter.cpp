#include "host/help/help_formatter.h"

#include "host/help/wrap_text.h"

namespace {

constexpr std::size_t kLineColumns = 80;

}  // namespace

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
    const bool hasValue = option->get_type_size() != 0 && !option->get_type_name().empty();
    return hasValue ? " " + option->get_type_name() : "";
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const {
    const std::string& standard = option->get_default_str();
    const std::string text =
        option->get_description() + (standard.empty() ? "" : " (default " + standard + ")");
    return WrapText(text, kLineColumns - get_column_width());
}
