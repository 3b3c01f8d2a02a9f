#pragma once

#include <set>
#include <string>

/// The operations of a class, or the free functions for an empty class name, that a public header
/// tags with "any", "audio" or "setup". Throws for one without a tag. Constructors and destructors are
/// left out; a tag for any thread on one throws.
std::set<std::string> TaggedOperations(const std::string& header, const std::string& className,
                                       const std::string& tag);
