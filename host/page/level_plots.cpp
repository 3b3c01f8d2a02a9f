#include "host/page/level_plots.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <vector>

#include "host/page/markup.h"
#include "host/page/plot.h"

namespace {

using Wave = HistoryColumn::Wave;

constexpr std::size_t kPoints = 600;
constexpr std::size_t kTableLines = 24;
constexpr double kLowestLevel = -90.0;
/// In s; beyond, a point of a curve covers so much time that the mean hides pauses.
constexpr double kLongRecording = 120.0;

double Decibels(double power) {
    return power > 0.0 ? 10.0 * std::log10(power) : -std::numeric_limits<double>::infinity();
}

/// A signal in at most `count` stretches of equal length.
std::vector<Wave> Reduced(const ColumnHistory& history, Version version, std::size_t count) {
    const std::vector<HistoryColumn>& columns = history.Columns();
    count = std::min(count, columns.size());
    std::vector<Wave> waves(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t begin = i * columns.size() / count;
        const std::size_t end = (i + 1) * columns.size() / count;
        waves[i].quietest = std::numeric_limits<double>::infinity();
        for (std::size_t column = begin; column < end; ++column) {
            const Wave& wave = columns[column].waves[static_cast<std::size_t>(version)];
            waves[i].least = std::min(waves[i].least, wave.least);
            waves[i].most = std::max(waves[i].most, wave.most);
            waves[i].power += wave.power / static_cast<double>(end - begin);
            waves[i].quietest = std::min(waves[i].quietest, wave.quietest);
        }
    }
    return waves;
}

std::string PathPoint(std::size_t x, double y) {
    char text[48];
    std::snprintf(text, sizeof(text), "%zu %.3g ", x, y);
    return text;
}

/// The SVG of a plot whose x axis counts the stretches.
std::string StretchedSvg(std::size_t count, double top, double height,
                         const std::string& contents) {
    char box[64];
    std::snprintf(box, sizeof(box), "0 %g %zu %g", top, std::max<std::size_t>(count, 1), height);
    return R"(<svg width="100%" height="100%" preserveAspectRatio="none")" +
           Attribute("viewBox", box) + ">" + contents + "</svg>";
}

std::string Outline(const std::vector<Wave>& waves, const char* name) {
    std::string points = "M";
    for (std::size_t i = 0; i < waves.size(); ++i) {
        points += PathPoint(i, -static_cast<double>(waves[i].most));
    }
    for (std::size_t i = waves.size(); i-- > 0;) {
        points += PathPoint(i, -static_cast<double>(waves[i].least));
    }
    return "<path" + Attribute("class", name) + Attribute("d", points) + "/>";
}

/// @param power member of a stretch
std::string LevelCurve(const std::vector<Wave>& waves, double Wave::*power, const char* name) {
    std::string points = "M";
    for (std::size_t i = 0; i < waves.size(); ++i) {
        points += PathPoint(i, -std::clamp(Decibels(waves[i].*power), kLowestLevel, 0.0));
    }
    return "<path" + Attribute("class", name) + Attribute("d", points) + "/>";
}

std::string CurveLegend(const std::string& title) {
    return title +
           R"(: <span class="key before">before</span> <span class="key after">after</span>)";
}

double PeakOf(const std::vector<Wave>& waves) {
    double peak = 0.0;
    for (const Wave& wave : waves) {
        peak = std::max({peak, static_cast<double>(wave.most), -static_cast<double>(wave.least)});
    }
    return peak;
}

std::string PeakText(const std::vector<Wave>& waves) {
    const double peak = PeakOf(waves);
    return LevelText(Decibels(peak * peak));
}

/// The least of 1, 0.5, 0.2, 0.1 .. that a signal fits in.
double RoundPeak(const std::vector<Wave>& waves) {
    const double peak = std::max(0.001, PeakOf(waves));
    const double power = std::pow(10.0, std::floor(std::log10(peak)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= peak) {
            return factor * power;
        }
    }
    return 10.0 * power;
}

}  // namespace

std::string WaveformPlot(const ColumnHistory& history) {
    const std::vector<Wave> before = Reduced(history, Version::kBefore, kPoints);
    const std::vector<Wave> after = Reduced(history, Version::kAfter, kPoints);
    const double peak = std::max(RoundPeak(before), RoundPeak(after));
    Plot plot;
    plot.title = CurveLegend("Waveform");
    plot.description =
        "Waveform. Peak before " + PeakText(before) + " dBFS, after " + PeakText(after) + " dBFS.";
    plot.kind = "wave";
    plot.values = LinearTicks(-peak, peak, 5);
    plot.canvas = StretchedSvg(before.size(), -peak, 2.0 * peak,
                               Outline(before, "before") + Outline(after, "after"));
    return PlotMarkup(plot, history.Seconds());
}

std::string LevelPlot(const ColumnHistory& history, const Report& report) {
    const std::vector<Wave> before = Reduced(history, Version::kBefore, kPoints);
    const std::vector<Wave> after = Reduced(history, Version::kAfter, kPoints);
    Plot plot;
    plot.title = CurveLegend("Level");
    plot.description = "Level over time. Noise floor before " +
                       LevelText(report.levels.noiseFloorBefore) + " dBFS, after " +
                       LevelText(report.levels.noiseFloorAfter) +
                       " dBFS. The table of levels over time has the same contents.";
    plot.kind = "level";
    plot.unit = "dBFS";
    plot.values = LinearTicks(kLowestLevel, 0.0, 7);
    std::string curves =
        LevelCurve(before, &Wave::power, "before") + LevelCurve(after, &Wave::power, "after");
    if (history.Seconds() > kLongRecording) {
        plot.title += ", mean and lowest";
        curves += LevelCurve(before, &Wave::quietest, "before lowest") +
                  LevelCurve(after, &Wave::quietest, "after lowest");
    }
    plot.canvas = StretchedSvg(before.size(), 0.0, -kLowestLevel, curves);
    return PlotMarkup(plot, history.Seconds());
}

std::string LevelTable(const ColumnHistory& history) {
    std::string markup =
        R"(<table><caption>Levels over time, in dBFS</caption><thead><tr><th scope="col">from</th>)"
        R"(<th scope="col">before</th><th scope="col">after</th><th )"
        R"(scope="col">removed</th></tr>)"
        "</thead><tbody>\n";
    std::vector<std::vector<Wave>> waves;
    waves.reserve(kVersions.size());
    for (const Version version : kVersions) {
        waves.push_back(Reduced(history, version, kTableLines));
    }
    const std::size_t count = waves.front().size();
    for (std::size_t line = 0; line < count; ++line) {
        const double start =
            history.Seconds() * static_cast<double>(line) / static_cast<double>(count);
        markup += R"(<tr><th scope="row">)" + TimeText(start) + "</th>";
        for (const std::vector<Wave>& version : waves) {
            markup += "<td>" + LevelText(Decibels(version[line].power)) + "</td>";
        }
        markup += "</tr>\n";
    }
    return markup + "</tbody></table>\n";
}
