#pragma once

#include <string>
#include <vector>

#include "host/help/command_table.h"

/// The completions for fish.
std::string FishCompletion(const std::vector<CommandEntry>& table);
