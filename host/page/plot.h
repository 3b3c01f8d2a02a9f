#pragma once

#include <string>
#include <vector>

#include "host/page/axis.h"

/// A picture over time, as HTML.
struct Plot {
    std::string title;         ///< what it shows; HTML
    std::string description;   ///< for those who do not see it; text
    std::string kind;          ///< class of its style
    std::string unit;          ///< of the vertical axis
    std::vector<Tick> values;  ///< of the vertical axis, 0 at the bottom
    std::string canvas;        ///< contents of an SVG element of 100 % by 100 %
};

/// @param seconds length of the time axis
std::string PlotMarkup(const Plot& plot, double seconds);
