#pragma once

#include <set>
#include <string>

/// The operations of a class, or the functions beside the classes (with an empty name), that a
/// public header tags so: "any", "audio" or "setup". Throws for one without a tag. Constructors and
/// destructors do not count, but may not be tagged for any thread.
std::set<std::string> TaggedOperations(const std::string& header, const std::string& className,
                                       const std::string& tag);
