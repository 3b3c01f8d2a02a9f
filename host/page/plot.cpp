#include "host/page/plot.h"

#include "host/page/markup.h"

namespace {

std::string ValueAxis(const Plot& plot) {
    std::string markup = R"(<svg class="values" aria-hidden="true">)";
    for (const Tick& tick : plot.values) {
        markup += R"(<text x="100%" dx="-8" dy=".35em")" +
                  Attribute("y", Percent(1.0 - tick.share)) + ">" + Escaped(tick.label) + "</text>";
    }
    return markup + "</svg>";
}

std::string TimeAxis(double seconds) {
    std::string markup = R"(<svg class="times" aria-hidden="true">)";
    for (const Tick& tick : TimeTicks(seconds)) {
        const std::string x = Percent(tick.share);
        markup += R"(<line y1="0" y2="5")" + Attribute("x1", x) + Attribute("x2", x) +
                  R"(/><text y="18")" + Attribute("x", x) + ">" + Escaped(tick.label) + "</text>";
    }
    return markup + "</svg>";
}

}  // namespace

std::string PlotMarkup(const Plot& plot, double seconds) {
    return "<figure" + Attribute("class", "plot " + plot.kind) + "><figcaption>" + plot.title +
           R"(</figcaption><div class="unit" aria-hidden="true">)" + Escaped(plot.unit) + "</div>" +
           ValueAxis(plot) + R"(<svg class="canvas" role="img")" +
           Attribute("aria-label", plot.description) + ">" + plot.canvas +
           R"(<line class="cursor" x1="0" x2="0" y1="0" y2="100%"/></svg>)" + TimeAxis(seconds) +
           "</figure>\n";
}
