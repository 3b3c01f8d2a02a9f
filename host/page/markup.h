#pragma once

#include <map>
#include <string>
#include <string_view>

/// Text for HTML, in elements and in quoted attributes. Control characters become '?'.
std::string Escaped(std::string_view text);

/// An attribute with a leading space: ` name="value"`.
std::string Attribute(std::string_view name, std::string_view value);
std::string Attribute(std::string_view name, double value);

/// A share of 0..1 in percent: "12.5%".
std::string Percent(double share);

/// A level with one decimal; "silence" for minus infinity.
std::string LevelText(double level);

/// Replaces each {{name}} of a template with its value. Values are not searched for further names.
std::string FilledIn(std::string_view text, const std::map<std::string, std::string>& values);
