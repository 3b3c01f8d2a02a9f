#include "host/help/wrap_text.h"

#include <sstream>

std::string WrapText(const std::string& text, std::size_t columns) {
    std::istringstream words(text);
    std::string wrapped;
    std::size_t column = 0;
    for (std::string word; words >> word;) {
        const bool isFirst = wrapped.empty();
        const bool breaks = !isFirst && column + 1 + word.size() > columns;
        wrapped += isFirst ? "" : breaks ? "\n" : " ";
        column = isFirst || breaks ? word.size() : column + 1 + word.size();
        wrapped += word;
    }
    return wrapped;
}
