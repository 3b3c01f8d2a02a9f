#pragma once

#include <string>
#include <vector>

#include "host/help/command_table.h"

/// The completions for zsh.
std::string ZshCompletion(const std::vector<CommandEntry>& table);
