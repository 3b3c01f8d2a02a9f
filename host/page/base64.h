#pragma once

#include <string>
#include <string_view>

/// Base64 (RFC 4648) of bytes.
std::string Base64(std::string_view bytes);
