#pragma once

#include <string>

enum class NodeState {
    kPresent,
    kAbsent,
    kUnknown  ///< PipeWire does not run, or pw-dump is missing
};

/// Whether PipeWire has a node of this name, by pw-dump.
NodeState FindPipeWireNode(const std::string& name);
