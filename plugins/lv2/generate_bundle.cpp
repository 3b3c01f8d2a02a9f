/// Writes the descriptions of an LV2 bundle into a folder: manifest.ttl, audio_filter.ttl and presets.ttl.
///
///     generate_bundle FOLDER
#include <array>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "plugins/lv2/control_ports.h"
#include "plugins/lv2/variants.h"

namespace {

using namespace audio_filter;

constexpr const char* kPrefixes =
    R"(@prefix doap: <http://usefulinc.com/ns/doap#> .
@prefix foaf: <http://xmlns.com/foaf/0.1/> .
@prefix log: <http://lv2plug.in/ns/ext/log#> .
@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
@prefix pprops: <http://lv2plug.in/ns/ext/port-props#> .
@prefix pset: <http://lv2plug.in/ns/ext/presets#> .
@prefix rdf: <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .
@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .
@prefix state: <http://lv2plug.in/ns/ext/state#> .
@prefix units: <http://lv2plug.in/ns/extensions/units#> .
@prefix urid: <http://lv2plug.in/ns/ext/urid#> .
)";

constexpr const char* kPlugin =
    R"(	a lv2:Plugin , lv2:FilterPlugin , doap:Project ;
	doap:license <http://opensource.org/licenses/mit> ;
	doap:maintainer [ foaf:name "The audio_filter authors" ] ;
	lv2:minorVersion 0 ;
	lv2:microVersion 1 ;
	lv2:optionalFeature lv2:hardRTCapable , log:log , urid:map ;
	rdfs:comment "Suppresses background noise in speech." ;
)";

constexpr const char* kSuppressionLevels =
    R"ttl(		lv2:scalePoint [ rdfs:label "Off" ; rdf:value -1 ] ,
			[ rdfs:label "0 (mild)" ; rdf:value 0 ] ,
			[ rdfs:label "1" ; rdf:value 1 ] ,
			[ rdfs:label "2" ; rdf:value 2 ] ,
			[ rdfs:label "3 (most aggressive)" ; rdf:value 3 ] ;
)ttl";

/// Settings that differ from the initial ones.
struct Preset {
    const char* id;
    const char* name;
    std::vector<std::pair<ControlPortIndex, int>> settings;
};

const std::array<Preset, 4> kPresets = {{
    {"gentle", "Gentle", {{kSuppressionPort, 0}}},
    {"call", "Voice call", {}},
    {"noisy-room", "Noisy room", {{kSuppressionPort, 3}}},
    {"speech-and-music", "Speech and music", {{kMusicDetectionPort, 1}}},
}};

struct Quoted {
    std::string_view text;
};

std::ostream& operator<<(std::ostream& out, Quoted quoted) {
    return out << '"' << quoted.text << '"';
}

/// A number as Turtle writes decimals.
struct Decimal {
    float value;
};

std::ostream& operator<<(std::ostream& out, Decimal decimal) {
    return out << std::fixed << std::setprecision(1) << decimal.value;
}

/// A number as Turtle writes decimals or integers.
struct Value {
    const ControlPort& port;
    float value;
};

std::ostream& operator<<(std::ostream& out, Value value) {
    return value.port.type == ControlPort::Type::kNumber ? out << Decimal{value.value}
                                                         : out << static_cast<int>(value.value);
}

void WriteAudioPort(std::ostream& out, const Variant& variant, int index) {
    const bool isInput = index < variant.channels;
    const std::string side = variant.channels == 1 ? "" : index % 2 == 0 ? "left" : "right";
    out << "\t\ta lv2:AudioPort , " << (isInput ? "lv2:InputPort" : "lv2:OutputPort")
        << " ;\n\t\tlv2:index " << index << " ;\n\t\tlv2:symbol \"" << (isInput ? "in" : "out")
        << (side.empty() ? "" : "_") << side << "\" ;\n\t\tlv2:name \"" << (isInput ? "In" : "Out")
        << (side.empty() ? "" : " ") << side << "\"\n";
}

void WriteProperties(std::ostream& out, const Variant& variant, std::size_t control) {
    const ControlPort& port = kControlPorts[control];
    const auto add = [&out](const char* property) {
        out << "\t\tlv2:portProperty " << property << " ;\n";
    };
    if (port.type == ControlPort::Type::kSwitch) {
        add("lv2:toggled");
    } else if (port.type == ControlPort::Type::kInteger) {
        add("lv2:integer");
    }
    if (control == kSuppressionPort) {
        add("lv2:enumeration");
        out << kSuppressionLevels;
    }
    if (control == kLatencyPort) {
        add("lv2:reportsLatency");
    }
    if (control == kLatencyPort || (control == kPhaseCheckPort && variant.channels == 1)) {
        add("pprops:notOnGUI");
    }
}

void WriteControlPort(std::ostream& out, const Variant& variant, std::size_t control) {
    const ControlPort& port = kControlPorts[control];
    out << "\t\ta lv2:ControlPort , " << (IsOutput(control) ? "lv2:OutputPort" : "lv2:InputPort")
        << " ;\n\t\tlv2:index " << static_cast<std::size_t>(variant.channels) * 2 + control
        << " ;\n\t\tlv2:symbol " << Quoted{port.symbol} << " ;\n\t\tlv2:name " << Quoted{port.name}
        << " ;\n";
    if (!IsOutput(control)) {
        out << "\t\tlv2:default " << Value{port, port.range.initial} << " ;\n";
    }
    out << "\t\tlv2:minimum " << Value{port, port.range.lowest} << " ;\n\t\tlv2:maximum "
        << Value{port, port.range.highest} << " ;\n";
    WriteProperties(out, variant, control);
    if (*port.designation != '\0') {
        out << "\t\tlv2:designation lv2:" << port.designation << " ;\n";
    }
    if (*port.unit != '\0') {
        out << "\t\tunits:unit units:" << port.unit << " ;\n";
    }
    out << "\t\trdfs:comment " << Quoted{port.comment} << "\n";
}

void WritePlugin(std::ostream& out, const Variant& variant) {
    out << "\n<" << variant.uri << ">\n"
        << kPlugin << "\tdoap:name " << Quoted{variant.name} << " ;\n\tlv2:port [\n";
    for (int index = 0; index < 2 * variant.channels; ++index) {
        WriteAudioPort(out, variant, index);
        out << "\t] , [\n";
    }
    for (std::size_t control = 0; control < kControlPortCount; ++control) {
        WriteControlPort(out, variant, control);
        out << (control + 1 < kControlPortCount ? "\t] , [\n" : "\t] .\n");
    }
}

float ValueIn(const Preset& preset, std::size_t control) {
    for (const auto& [port, value] : preset.settings) {
        if (port == control) {
            return static_cast<float>(value);
        }
    }
    return kControlPorts[control].range.initial;
}

void WritePresetHead(std::ostream& out, const Variant& variant, const Preset& preset) {
    out << "\n<" << variant.uri << "#" << preset.id << ">\n\ta pset:Preset ;\n\tlv2:appliesTo <"
        << variant.uri << "> ;\n";
}

/// Every setting but "enabled", so that a preset does not depend on the one before. As decimals: some hosts skip
/// integers.
void WritePresets(std::ostream& out, const Variant& variant) {
    for (const Preset& preset : kPresets) {
        WritePresetHead(out, variant, preset);
        out << "\trdfs:label " << Quoted{preset.name} << " ;\n\tlv2:port [\n";
        for (std::size_t control = kSuppressionPort; control < kLatencyPort; ++control) {
            const ControlPort& port = kControlPorts[control];
            out << "\t\tlv2:symbol " << Quoted{port.symbol} << " ;\n\t\tpset:value "
                << Decimal{ValueIn(preset, control)}
                << (control + 1 < kLatencyPort ? "\n\t] , [\n" : "\n\t] .\n");
        }
    }
}

void WriteManifest(std::ostream& out, const Variant& variant) {
    out << "\n<" << variant.uri
        << ">\n\ta lv2:Plugin ;\n\tlv2:binary <audio_filter.so> ;\n\trdfs:seeAlso "
           "<audio_filter.ttl> .\n";
    for (const Preset& preset : kPresets) {
        WritePresetHead(out, variant, preset);
        out << "\trdfs:seeAlso <presets.ttl> .\n";
    }
}

bool WriteFile(const std::string& path, void (*write)(std::ostream& out, const Variant& variant)) {
    std::ofstream out(path);
    out << kPrefixes;
    for (const Variant& variant : kVariants) {
        write(out, variant);
    }
    return static_cast<bool>(out.flush());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: generate_bundle FOLDER\n";
        return 2;
    }
    const std::string folder = argv[1];
    const bool written = WriteFile(folder + "/audio_filter.ttl", WritePlugin) &&
                         WriteFile(folder + "/presets.ttl", WritePresets) &&
                         WriteFile(folder + "/manifest.ttl", WriteManifest);
    return written ? 0 : 1;
}
