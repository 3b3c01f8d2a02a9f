#pragma once

#include <string>
#include <vector>

#include "host/help/command_table.h"

/// The completions for bash.
std::string BashCompletion(const std::vector<CommandEntry>& table);
