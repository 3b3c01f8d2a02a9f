#pragma once

#include <string>
#include <vector>

#include "host/help/command_table.h"

/// The man page, in the man macros of roff.
std::string ManPage(const std::vector<CommandEntry>& table, const std::string& version);
