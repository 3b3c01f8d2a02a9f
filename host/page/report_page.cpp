#include "host/page/report_page.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <vector>

#include "host/channels.h"
#include "host/page/base64.h"
#include "host/page/level_plots.h"
#include "host/page/markup.h"
#include "host/page/opus_sound.h"
#include "host/page/plot.h"
#include "host/page/spectrogram.h"
#include "host/page/time_line.h"
#include "report_page_parts.h"

namespace {

constexpr std::size_t kPictureWidth = 840;
/// Of all sounds together, before Base64: leaves half of 1 MB for the pictures.
constexpr double kSoundBytes = 330e3;
constexpr double kMostBitsPerChannel = 64e3;
constexpr std::array kVersionTitles = {"Before", "After", "Removed (before minus after)"};

std::string DataUri(const char* type, const std::string& bytes) {
    return std::string("data:") + type + ";base64," + Base64(bytes);
}

/// Base64 of a hash in hex, as content security policies state it.
std::string HashText(std::string_view hex) {
    std::string bytes;
    for (std::size_t at = 0; at < hex.size(); at += 2) {
        bytes += static_cast<char>(std::stoi(std::string(hex.substr(at, 2)), nullptr, 16));
    }
    return Base64(bytes);
}

std::string Names(const Report& report) {
    std::string names;
    for (const std::string& input : report.inputs) {
        names += (names.empty() ? "" : " + ") + input;
    }
    return names + " → " + report.output;
}

std::string Facts(const Report& report) {
    return TimeText(report.duration) + ", " + std::to_string(report.format.sampleRate) + " Hz, " +
           ChannelsName(report.format.channels) + "; " +
           Escaped(SettingsText(report.settings.front().settings));
}

std::vector<Bar> ExcerptBars(const SignalHistory& history, const AudioFormat& format) {
    std::vector<Bar> bars;
    const double samplesPerSecond =
        static_cast<double>(format.sampleRate) * history.Parts().Channels();
    for (const Excerpt& excerpt : history.Parts().Kept()) {
        const double seconds = static_cast<double>(excerpt.before.size()) / samplesPerSecond;
        bars.push_back({excerpt.start, excerpt.start + seconds, "part to listen to"});
    }
    return bars;
}

double TotalSeconds(const std::vector<Bar>& bars) {
    double seconds = 0.0;
    for (const Bar& bar : bars) {
        seconds += bar.end - bar.begin;
    }
    return seconds;
}

std::string ExcerptText(const std::vector<Bar>& bars, double duration) {
    if (TotalSeconds(bars) > duration - 0.001) {
        return "The whole recording.";
    }
    std::string text = "Parts of the recording with much to hear: ";
    for (const Bar& bar : bars) {
        text +=
            (&bar == &bars.front() ? "" : ", ") + TimeText(bar.begin) + " to " + TimeText(bar.end);
    }
    return text + ".";
}

std::string ExcerptList(const std::vector<Bar>& bars) {
    std::string list;
    for (const Bar& bar : bars) {
        char text[64];
        std::snprintf(text, sizeof(text), "%s[%.6f,%.6f]", list.empty() ? "" : ",", bar.begin,
                      bar.end - bar.begin);
        list += text;
    }
    return "[" + list + "]";
}

/// One version of all excerpts, one after another.
std::vector<short> JoinedParts(const std::vector<Excerpt>& excerpts, Version version) {
    std::vector<short> joined;
    for (const Excerpt& excerpt : excerpts) {
        for (std::size_t i = 0; i < excerpt.before.size(); ++i) {
            const int before = excerpt.before[i];
            const int after = excerpt.after[i];
            const int sample = version == Version::kBefore  ? before
                               : version == Version::kAfter ? after
                                                            : before - after;
            joined.push_back(static_cast<short>(std::clamp(sample, -32768, 32767)));
        }
    }
    return joined;
}

std::string Sounds(const SignalHistory& history, const AudioFormat& format, double seconds) {
    const int channels = history.Parts().Channels();
    const double bits = std::min(kSoundBytes * 8.0 / (kVersions.size() * std::max(seconds, 1.0)),
                                 kMostBitsPerChannel * channels);
    std::string markup;
    for (const Version version : kVersions) {
        const std::string title = kVersionTitles[static_cast<std::size_t>(version)];
        const std::string sound = EncodeOpus(JoinedParts(history.Parts().Kept(), version),
                                             format.sampleRate, channels, bits);
        markup += "<p>" + title + "<audio controls" + Attribute("aria-label", title) + R"( src=")" +
                  DataUri("audio/ogg", sound) + "\"></audio></p>\n";
    }
    return markup;
}

std::string Levels(const Report& report) {
    std::string markup =
        R"(<div class="scroll"><table><thead><tr><td></td><th scope="col">before</th>)"
        "<th scope=\"col\">after</th><th scope=\"col\">change</th></tr></thead><tbody>\n";
    for (const ReportRow& row : ReportRows(report)) {
        // Adding 0 turns -0 into 0.
        const double change = std::round((row.after - row.before) * 10.0) / 10.0 + 0.0;
        char text[32] = "";
        if (std::isfinite(change)) {
            std::snprintf(text, sizeof(text), "%+.1f dB", change);
        }
        markup += std::string(R"(<tr><th scope="row">)") + row.label + " (" + row.unit +
                  ")</th><td>" + LevelText(row.before) + "</td><td>" + LevelText(row.after) +
                  "</td><td>" + text + "</td></tr>\n";
    }
    return markup + "</tbody></table></div>\n";
}

std::vector<Color> LevelPalette() {
    const auto levels = ColorMap();
    return {levels.begin(), levels.end()};
}

std::string Picture(const IndexedImage& image) {
    return R"(<image width="100%" height="100%" preserveAspectRatio="none" href=")" +
           DataUri("image/png", EncodePng(image, LevelPalette())) + R"("/>)";
}

std::string ColorLegend(const LevelScale& scale, double rowHertz) {
    IndexedImage bar(kColorLevels, 1);
    for (std::size_t level = 0; level < kColorLevels; ++level) {
        bar.At(level, 0) = static_cast<std::uint8_t>(level);
    }
    std::string ticks;
    for (const Tick& tick : LinearTicks(scale.lowest, scale.Highest(), 7)) {
        ticks += R"(<text y="2.3rem")" + Attribute("x", Percent(tick.share)) + ">" + tick.label +
                 "</text>";
    }
    char text[96];
    std::snprintf(text, sizeof(text),
                  "Level in dBFS per band of %.0f Hz, from %.0f (dark) to %.0f (light):", rowHertz,
                  scale.lowest, scale.Highest());
    return std::string(R"(<div class="legend">)") + text +
           R"(<svg aria-hidden="true"><svg width="100%" height="1.3rem">)" + Picture(bar) +
           "</svg>" + ticks + "</svg></div>";
}

std::string Spectrograms(const ColumnHistory& history, const LevelScale& scale,
                         const Report& report) {
    const WindowLevels& levels = report.levels;
    const std::array<std::string, 3> descriptions = {
        "noise floor " + LevelText(levels.noiseFloorBefore) + " dBFS, speech " +
            LevelText(levels.speechBefore) + " dBFS",
        "noise floor " + LevelText(levels.noiseFloorAfter) + " dBFS, speech " +
            LevelText(levels.speechAfter) + " dBFS",
        "the difference of the two signals"};
    std::string markup;
    for (const Version version : kVersions) {
        const auto index = static_cast<std::size_t>(version);
        Plot plot;
        plot.title = kVersionTitles[index];
        plot.description =
            std::string("Spectrogram: ") + kVersionTitles[index] + ", " + descriptions[index] + ".";
        plot.kind = "spectrogram";
        plot.unit = "kHz";
        plot.values = LinearTicks(0.0, history.HighestFrequency() / 1000.0, 7);
        plot.canvas = Picture(Spectrogram(history, version, scale, kPictureWidth));
        markup += PlotMarkup(plot, history.Seconds());
    }
    return markup;
}

std::string Notes(const Report& report) {
    std::string markup;
    if (report.loudnessGain) {
        char text[96];
        std::snprintf(text, sizeof(text),
                      "Pictures and sounds show the signal before its gain of %+.1f dB",
                      *report.loudnessGain);
        markup = std::string("<li>") + text + " (--loudness).</li>\n";
    }
    for (const std::string& note : report.notes) {
        markup += "<li>" + Escaped(note) + "</li>\n";
    }
    return markup.empty() ? "" : "<h3>Notes</h3><ul>\n" + markup + "</ul>\n";
}

}  // namespace

std::string ReportPage(const Report& report, const SignalHistory& history) {
    const ColumnHistory& columns = history.Columns();
    const LevelScale scale = ScaleOf(columns);
    const std::vector<Bar> excerpts = ExcerptBars(history, report.format);
    const std::string names = Escaped(Names(report));
    return FilledIn(
        page_parts::kHtml,
        {{"style-hash", HashText(page_parts::kStyleHash)},
         {"script-hash", HashText(page_parts::kScriptHash)},
         {"style", std::string(page_parts::kStyle)},
         {"script", std::string(page_parts::kScript)},
         {"version", AUDIO_FILTER_VERSION},
         {"title", names + " – audio-filter"},
         {"heading", "<bdi>" + names + "</bdi>"},
         {"facts", Facts(report)},
         {"excerpts", ExcerptText(excerpts, report.duration)},
         {"excerpt-list", ExcerptList(excerpts)},
         {"duration", std::to_string(report.duration)},
         {"sounds", Sounds(history, report.format, TotalSeconds(excerpts))},
         {"levels", Levels(report)},
         {"legend", ColorLegend(scale, columns.HighestFrequency() / ColumnHistory::kRows)},
         {"spectrograms", Spectrograms(columns, scale, report)},
         {"waveform", WaveformPlot(columns)},
         {"level-plot", LevelPlot(columns, report)},
         {"level-table", LevelTable(columns)},
         {"time-line", TimeLinePlot(report, excerpts)},
         {"event-table", EventTable(report)},
         {"notes", Notes(report)}});
}
