#include "threads/header_tags.h"

#include <cctype>
#include <fstream>
#include <stdexcept>

namespace {

bool StartsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

std::string Trimmed(const std::string& line) {
    const std::size_t first = line.find_first_not_of(' ');
    return first == std::string::npos ? "" : line.substr(first);
}

/// The name before the first parenthesis of a declaration; empty for none.
std::string NameIn(const std::string& declaration) {
    const std::size_t end = declaration.find('(');
    if (end == std::string::npos) {
        return "";
    }
    std::size_t start = end;
    while (start > 0 && (std::isalnum(static_cast<unsigned char>(declaration[start - 1])) != 0 ||
                         declaration[start - 1] == '_' || declaration[start - 1] == '~' ||
                         declaration[start - 1] == '=')) {
        --start;
    }
    return declaration.substr(start, end - start);
}

}  // namespace

std::set<std::string> TaggedOperations(const std::string& header, const std::string& className,
                                       const std::string& tag) {
    std::ifstream file(AUDIO_FILTER_SOURCES "/" + header);
    if (!file) {
        throw std::runtime_error(header + " cannot be read");
    }
    std::set<std::string> names;
    std::string inside;
    std::string tagged;
    std::string declaration;
    bool isPublic = true;
    for (std::string line; std::getline(file, line);) {
        const std::string text = Trimmed(line);
        if (StartsWith(line, "class AUDIO_FILTER_API ") && line.back() == '{') {
            inside = line.substr(23, line.find(' ', 23) - 23);
            isPublic = true;
        } else if (StartsWith(line, "struct ") && line.back() == '{') {
            inside = "a record, which has no operations";
        } else if (StartsWith(line, "};")) {
            inside.clear();
            isPublic = true;
        } else if (text == "private:" || text == "protected:" || text == "public:") {
            isPublic = text == "public:";
        } else if (text.empty()) {
            tagged.clear();  // a tag covers the declarations that follow it without an empty line
        } else if (StartsWith(text, "/// [")) {
            tagged = text.substr(5, text.find(']') - 5);
        } else if (isPublic && inside == className && text[0] != '/' && text[0] != '#') {
            declaration += text.substr(0, text.find("//"));
            const char last = declaration.find_last_not_of(' ') == std::string::npos
                                  ? ' '
                                  : declaration[declaration.find_last_not_of(' ')];
            if (last != ';' && last != '}') {
                continue;
            }
            const std::string name = NameIn(declaration);
            declaration.clear();
            const bool isLife = name == className || StartsWith(name, "~") || name == "operator=";
            if (isLife ? tagged == "any" || tagged == "audio" : !name.empty() && tagged.empty()) {
                throw std::runtime_error(header + ": " + name + " is not tagged as it must be");
            }
            if (tagged == tag && !name.empty() && !isLife) {
                names.insert(name);
            }
        }
    }
    return names;
}
