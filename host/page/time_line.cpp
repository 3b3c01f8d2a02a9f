#include "host/page/time_line.h"

#include <algorithm>
#include <utility>

#include "host/page/markup.h"
#include "host/page/plot.h"

namespace {

/// Bounds the size of the page for recordings with thousands of events.
constexpr std::size_t kMostEntries = 400;

struct Lane {
    std::string name;
    std::string kind;  ///< class of its style
    std::vector<Bar> bars;
};

std::vector<Bar> SettingBars(const Report& report) {
    std::vector<Bar> bars;
    for (std::size_t i = 0; i < report.settings.size(); ++i) {
        const bool isLast = i + 1 == report.settings.size();
        bars.push_back({report.settings[i].seconds,
                        isLast ? report.duration : report.settings[i + 1].seconds,
                        SettingsText(report.settings[i].settings)});
    }
    return bars;
}

std::string SourceText(const Report& report, int source) {
    return report.inputs.size() < 2 ? "" : "source " + std::to_string(source + 1) + ": ";
}

std::vector<Bar> PhaseBars(const Report& report) {
    std::vector<Bar> bars;
    for (const CorrectedStretch& stretch : report.corrected) {
        bars.push_back({stretch.begin, stretch.end,
                        SourceText(report, stretch.source) + "left channel inverted"});
    }
    return bars;
}

std::string LaneMarkup(const Lane& lane, std::size_t index, std::size_t count, double seconds) {
    const double height = 1.0 / static_cast<double>(count);
    const double top = static_cast<double>(index) * height;
    std::string markup = "<g" + Attribute("class", lane.kind) + ">";
    for (std::size_t i = 0; i < std::min(lane.bars.size(), kMostEntries); ++i) {
        const Bar& bar = lane.bars[i];
        const double end = std::min(bar.end, seconds);
        markup += "<rect" + Attribute("x", Percent(bar.begin / seconds)) +
                  Attribute("y", Percent(top + 0.45 * height)) +
                  Attribute("width", Percent(std::max(0.0, end - bar.begin) / seconds)) +
                  Attribute("height", Percent(0.45 * height)) + "><title>" +
                  Escaped(TimeText(bar.begin) + " to " + TimeText(end) + ": " + bar.text) +
                  "</title></rect>";
    }
    return markup + R"(</g><text x="4")" + Attribute("y", Percent(top + 0.32 * height)) + ">" +
           Escaped(lane.name) + "</text>";
}

}  // namespace

std::vector<Bar> MusicBars(const Report& report) {
    std::vector<Bar> bars;
    bool isMusic = false;
    for (const StreamNotice& notice : report.notices) {
        if (notice.kind != StreamNotice::Kind::kMusic || notice.on == isMusic) {
            continue;
        }
        isMusic = notice.on;
        if (isMusic) {
            bars.push_back({notice.seconds, report.duration, "music"});
        } else {
            bars.back().end = notice.seconds;
        }
    }
    return bars;
}

std::string TimeLinePlot(const Report& report, const std::vector<Bar>& excerpts) {
    const bool detectsMusic =
        std::any_of(report.settings.begin(), report.settings.end(),
                    [](const SettingsAt& at) { return at.settings.keepMusic; });
    const std::vector<Lane> lanes = {
        {"settings", "settings", SettingBars(report)},
        {detectsMusic ? "music" : "music (detection off)", "music", MusicBars(report)},
        {"left channel inverted", "phase", PhaseBars(report)},
        {"parts to listen to", "parts", excerpts}};
    Plot plot;
    plot.title = "Settings and verdicts";
    plot.description =
        "Time line of settings, music, inverted channels and parts to listen to. The table of "
        "events has the same contents.";
    plot.kind = "lanes";
    for (std::size_t i = 0; i < lanes.size(); ++i) {
        plot.canvas += LaneMarkup(lanes[i], i, lanes.size(), report.duration);
    }
    return PlotMarkup(plot, report.duration);
}

std::string EventTable(const Report& report) {
    std::vector<std::pair<double, std::string>> entries;
    for (const SettingsAt& at : report.settings) {
        entries.emplace_back(at.seconds, "settings: " + SettingsText(at.settings));
    }
    for (const StreamNotice& notice : report.notices) {
        if (notice.kind != StreamNotice::Kind::kReversed) {
            entries.emplace_back(notice.seconds, notice.text);
        }
    }
    for (const Bar& bar : PhaseBars(report)) {
        entries.emplace_back(bar.begin, bar.text + " until " + TimeText(bar.end));
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::string markup =
        R"(<table class="events"><caption>Events</caption><thead><tr><th scope="col">at</th>)"
        "<th scope=\"col\">what</th></tr></thead><tbody>\n";
    for (std::size_t i = 0; i < std::min(entries.size(), kMostEntries); ++i) {
        markup += R"(<tr><th scope="row">)" + TimeText(entries[i].first) + "</th><td>" +
                  Escaped(entries[i].second) + "</td></tr>\n";
    }
    if (entries.size() > kMostEntries) {
        markup += R"(<tr><th scope="row"></th><td>and )" +
                  std::to_string(entries.size() - kMostEntries) + " more</td></tr>\n";
    }
    return markup + "</tbody></table>\n";
}
