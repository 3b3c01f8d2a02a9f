#include <obs-module.h>

#include <exception>

#include "plugins/obs/filter_properties.h"
#include "plugins/obs/filter_settings.h"
#include "plugins/obs/obs_filter.h"

OBS_DECLARE_MODULE()
OBS_MODULE_USE_DEFAULT_LOCALE("audio-filter", "en-US")

namespace {

using audio_filter::obs::ObsFilter;

ObsFilter& FilterOf(void* data) {
    return *static_cast<ObsFilter*>(data);
}

const char* GetName(void* /*type*/) {
    return obs_module_text("AudioFilter");
}

/// @return null when memory runs out: OBS then keeps the filter without effect
void* Create(obs_data_t* settings, obs_source_t* source) {
    try {
        return new ObsFilter(settings, source);
    } catch (const std::exception& error) {
        blog(LOG_ERROR, "[audio_filter: '%s'] cannot start: %s", obs_source_get_name(source),
             error.what());
        return nullptr;
    }
}

void Destroy(void* data) {
    delete static_cast<ObsFilter*>(data);
}

void Update(void* data, obs_data_t* settings) {
    FilterOf(data).Update(settings);
}

obs_properties_t* GetProperties(void* data) {
    return audio_filter::obs::MakeProperties(static_cast<ObsFilter*>(data));
}

obs_audio_data* FilterAudio(void* data, obs_audio_data* audio) {
    FilterOf(data).Process(*audio);
    return audio;
}

void Tick(void* data, float /*seconds*/) {
    FilterOf(data).LogEvents();
}

}  // namespace

const char* obs_module_name() {
    return "Audio filter";
}

const char* obs_module_description() {
    return "Noise suppression, gain curve and phase check for audio sources";
}

bool obs_module_load() {
    obs_source_info info = {};
    info.id = "audio_filter";
    info.type = OBS_SOURCE_TYPE_FILTER;
    info.output_flags = OBS_SOURCE_AUDIO;
    info.get_name = GetName;
    info.create = Create;
    info.destroy = Destroy;
    info.get_defaults = audio_filter::obs::SetDefaults;
    info.get_properties = GetProperties;
    info.update = Update;
    info.filter_audio = FilterAudio;
    info.video_tick = Tick;
    obs_register_source(&info);
    return true;
}
