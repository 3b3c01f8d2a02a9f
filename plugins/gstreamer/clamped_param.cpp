#include "plugins/gstreamer/clamped_param.h"

namespace audio_filter {

namespace {

gboolean LeaveUnchanged(GParamSpec* /*spec*/, GValue* /*value*/) {
    return FALSE;
}

void InitSpecClass(gpointer type, gpointer /*data*/) {
    static_cast<GParamSpecClass*>(type)->value_validate = LeaveUnchanged;
}

GType DeriveType(GType parent, const char* name) {
    GTypeQuery query = {};
    g_type_query(parent, &query);
    return g_type_register_static_simple(parent, name, query.class_size, InitSpecClass,
                                         query.instance_size, nullptr, GTypeFlags{});
}

/// @param type of Spec, a GParamSpecInt or the like
template <typename Spec, typename Value>
GParamSpec* Make(GType type, const char* name, const char* nick, const char* text,
                 const PluginRange<Value>& range, GParamFlags flags) {
    auto* spec = static_cast<Spec*>(g_param_spec_internal(type, name, nick, text, flags));
    spec->minimum = range.lowest;
    spec->maximum = range.highest;
    spec->default_value = range.initial;
    return &spec->parent_instance;
}

}  // namespace

GParamSpec* ClampedInt(const char* name, const char* nick, const char* text,
                       const PluginRange<int>& range, GParamFlags flags) {
    static const GType type = DeriveType(G_TYPE_PARAM_INT, "AudioFilterClampedInt");
    return Make<GParamSpecInt>(type, name, nick, text, range, flags);
}

GParamSpec* ClampedFloat(const char* name, const char* nick, const char* text,
                         const PluginRange<float>& range, GParamFlags flags) {
    static const GType type = DeriveType(G_TYPE_PARAM_FLOAT, "AudioFilterClampedFloat");
    return Make<GParamSpecFloat>(type, name, nick, text, range, flags);
}

}  // namespace audio_filter
