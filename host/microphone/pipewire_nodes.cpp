#include "host/microphone/pipewire_nodes.h"

#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace {

/// Everything that a shell command prints.
std::string OutputOf(const char* command) {
    std::string text;
    std::FILE* const pipe = popen(command, "r");
    if (pipe == nullptr) {
        return text;
    }
    std::array<char, 4096> bytes = {};
    while (const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), pipe)) {
        text.append(bytes.data(), count);
    }
    pclose(pipe);
    return text;
}

}  // namespace

NodeState FindPipeWireNode(const std::string& name) {
    const nlohmann::json dump =
        nlohmann::json::parse(OutputOf("pw-dump 2>/dev/null"), nullptr, false);
    if (!dump.is_array()) {
        return NodeState::kUnknown;
    }
    const nlohmann::json::json_pointer path("/info/props/node.name");
    for (const nlohmann::json& object : dump) {
        if (object.contains(path) && object.at(path) == name) {
            return NodeState::kPresent;
        }
    }
    return NodeState::kAbsent;
}
