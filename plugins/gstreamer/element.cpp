#include "plugins/gstreamer/element.h"

#include <gst/audio/gstaudiofilter.h>

#include <memory>
#include <new>
#include <utility>

#include "plugins/gstreamer/change_message.h"
#include "plugins/gstreamer/element_properties.h"
#include "plugins/gstreamer/element_state.h"

GST_DEBUG_CATEGORY_STATIC(audio_filter_debug);
#define GST_CAT_DEFAULT audio_filter_debug

namespace audio_filter {

namespace {

struct Element {
    GstAudioFilter base;
    ElementState* state;
};

using ElementClass = GstAudioFilterClass;

GstBaseTransformClass* parent = nullptr;

Element* Self(gpointer object) {
    return static_cast<Element*>(object);
}

ElementState& State(gpointer object) {
    return *Self(object)->state;
}

PluginSettings Wanted(gpointer object) {
    GST_OBJECT_LOCK(object);
    const PluginSettings wanted = State(object).wanted;
    GST_OBJECT_UNLOCK(object);
    return wanted;
}

void Post(GstBaseTransform* base, const StreamEvent& event) {
    const GstClockTime timestamp = State(base).stream->TimestampOf(event.frame);
    gst_element_post_message(GST_ELEMENT_CAST(base),
                             ChangeMessage(GST_OBJECT_CAST(base), event, base->segment, timestamp));
    if (event.type == StreamEvent::Type::kMusic) {
        g_object_notify(G_OBJECT(base), "music");
    }
}

/// Publishes what has changed in the stream.
void Report(GstBaseTransform* base) {
    ElementState& state = State(base);
    Stream& stream = state.stream->Audio();
    state.music = stream.IsMusic();
    state.reversed = stream.IsReversed(0);
    state.reduction = stream.Reduction();
    for (StreamEvent event; stream.NextEvent(event);) {
        Post(base, event);
    }
}

/// Verdicts end with the history of the stream.
void EndVerdicts(GstBaseTransform* base) {
    ElementState& state = State(base);
    state.reduction = 0.0F;
    if (state.music.exchange(false)) {
        Post(base, {.type = StreamEvent::Type::kMusic});
    }
    if (std::exchange(state.reversed, false)) {
        Post(base, {.type = StreamEvent::Type::kReversed});
    }
}

void PostNoMemory(gpointer object) {
    GST_ELEMENT_ERROR(object, RESOURCE, NO_SPACE_LEFT, ("Out of memory."), (nullptr));
}

/// Ends the run of contiguous buffers.
GstFlowReturn PushPending(GstBaseTransform* base) {
    ElementState& state = State(base);
    if (!state.stream) {
        return GST_FLOW_OK;
    }
    GstBuffer* pending = state.stream->Drain();
    Report(base);
    return pending == nullptr ? GST_FLOW_OK : gst_pad_push(base->srcpad, pending);
}

void Flush(GstBaseTransform* base) {
    ElementState& state = State(base);
    if (!state.stream) {
        return;
    }
    EndVerdicts(base);
    try {
        state.stream->Reset();
    } catch (const std::bad_alloc&) {
        PostNoMemory(base);
    }
}

bool StartStream(GstAudioFilter* filter, const GstAudioInfo& info) {
    ElementState& state = State(filter);
    try {
        if (state.stream) {
            EndVerdicts(GST_BASE_TRANSFORM_CAST(filter));
        } else {
            state.stream.emplace();
        }
        return state.stream->Init(info, ToStreamSettings(Wanted(filter)));
    } catch (const std::bad_alloc&) {
        PostNoMemory(filter);
        return false;
    }
}

gboolean Setup(GstAudioFilter* filter, const GstAudioInfo* info) {
    ElementState& state = State(filter);
    if (state.stream && gst_audio_info_is_equal(info, &state.stream->Info()) != FALSE) {
        return TRUE;
    }
    if (!StartStream(filter, *info)) {
        return FALSE;
    }
    state.latency = state.stream->Latency();
    GST_INFO_OBJECT(filter, "%d Hz, %d channels, latency %" GST_TIME_FORMAT,
                    GST_AUDIO_INFO_RATE(info), GST_AUDIO_INFO_CHANNELS(info),
                    GST_TIME_ARGS(state.latency.load()));
    g_object_notify(G_OBJECT(filter), "latency");
    gst_element_post_message(GST_ELEMENT_CAST(filter),
                             gst_message_new_latency(GST_OBJECT_CAST(filter)));
    return TRUE;
}

gboolean Stop(GstBaseTransform* base) {
    ElementState& state = State(base);
    if (state.stream) {
        EndVerdicts(base);
        state.stream.reset();
    }
    return TRUE;
}

/// With the values of control bindings at that time.
StreamSettings SettingsAt(GstBaseTransform* base, GstClockTime timestamp) {
    auto* object = GST_OBJECT_CAST(base);
    if (timestamp != GST_CLOCK_TIME_NONE && base->segment.format == GST_FORMAT_TIME &&
        gst_object_has_active_control_bindings(object) != FALSE) {
        const GstClockTime streamTime =
            gst_segment_to_stream_time(&base->segment, GST_FORMAT_TIME, timestamp);
        if (streamTime != GST_CLOCK_TIME_NONE) {
            gst_object_sync_values(object, streamTime);
        }
    }
    return ToStreamSettings(Wanted(base));
}

/// Ends the previous run if the buffer does not continue it.
GstFlowReturn Join(GstBaseTransform* base, GstBuffer* buffer) {
    // Backwards, each buffer lies before the previous one.
    if (base->segment.rate > 0.0 && State(base).stream->Continues(buffer)) {
        return GST_FLOW_OK;
    }
    GST_DEBUG_OBJECT(base, "new run at %" GST_TIME_FORMAT, GST_TIME_ARGS(GST_BUFFER_PTS(buffer)));
    return PushPending(base);
}

void PostPartialFrames(GstBaseTransform* base, GstBuffer* buffer) {
    GST_ELEMENT_ERROR(
        base, STREAM, FORMAT, ("A buffer does not hold whole frames of the negotiated format."),
        ("%" G_GSIZE_FORMAT " bytes, %d bytes per frame; raw files need rawaudioparse",
         gst_buffer_get_size(buffer), GST_AUDIO_INFO_BPF(&State(base).stream->Info())));
}

GstFlowReturn TransformInPlace(GstBaseTransform* base, GstBuffer* buffer) {
    const GstFlowReturn joined = Join(base, buffer);
    if (joined != GST_FLOW_OK) {
        return joined;
    }
    const gssize frames = State(base).stream->Process(
        buffer, [base](GstClockTime timestamp) { return SettingsAt(base, timestamp); });
    if (frames < 0) {
        PostPartialFrames(base, buffer);
        return GST_FLOW_ERROR;
    }
    Report(base);
    return frames == 0 ? GST_BASE_TRANSFORM_FLOW_DROPPED : GST_FLOW_OK;
}

/// Whether timestamps keep their meaning.
bool Continues(const GstSegment& segment, const GstSegment& next) {
    return next.format == segment.format && next.rate == segment.rate &&
           next.applied_rate == segment.applied_rate && next.base == segment.base &&
           next.offset == segment.offset && next.start == segment.start &&
           next.time == segment.time;
}

bool ChangesFormat(GstBaseTransform* base, GstEvent* event) {
    GstCaps* caps = nullptr;
    gst_event_parse_caps(event, &caps);
    GstAudioInfo info = {};
    const ElementState& state = State(base);
    return state.stream && (gst_audio_info_from_caps(&info, caps) == FALSE ||
                            gst_audio_info_is_equal(&info, &state.stream->Info()) == FALSE);
}

/// Whether what is pending has to leave before the event.
bool EndsRun(GstBaseTransform* base, GstEvent* event) {
    switch (GST_EVENT_TYPE(event)) {
        case GST_EVENT_STREAM_START:
        case GST_EVENT_GAP:
        case GST_EVENT_SEGMENT_DONE:
        case GST_EVENT_EOS: return true;
        case GST_EVENT_CAPS: return ChangesFormat(base, event);
        case GST_EVENT_SEGMENT: {
            const GstSegment* segment = nullptr;
            gst_event_parse_segment(event, &segment);
            return !Continues(base->segment, *segment);
        }
        default: return false;
    }
}

gboolean SinkEvent(GstBaseTransform* base, GstEvent* event) {
    if (EndsRun(base, event)) {
        PushPending(base);
    }
    if (GST_EVENT_TYPE(event) == GST_EVENT_FLUSH_STOP) {
        Flush(base);
    }
    return parent->sink_event(base, event);
}

gboolean Query(GstBaseTransform* base, GstPadDirection direction, GstQuery* query) {
    const gboolean handled = parent->query(base, direction, query);
    if (handled != FALSE && direction == GST_PAD_SRC &&
        GST_QUERY_TYPE(query) == GST_QUERY_LATENCY) {
        gboolean live = FALSE;
        GstClockTime least = 0;
        GstClockTime most = 0;
        gst_query_parse_latency(query, &live, &least, &most);
        const GstClockTime own = State(base).latency;
        gst_query_set_latency(query, live, least + own,
                              most == GST_CLOCK_TIME_NONE ? most : most + own);
    }
    return handled;
}

void Set(GObject* object, guint property, const GValue* value, GParamSpec* spec) {
    ElementState& state = State(object);
    GST_OBJECT_LOCK(object);
    const PluginSettings before = state.wanted;
    const bool known = SetProperty(state.wanted, property, value);
    const PluginSettings wanted = state.wanted;
    GST_OBJECT_UNLOCK(object);
    if (!known) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, property, spec);
        return;
    }
    const PluginSettings used = Clamped(wanted);
    if (property == kSuppression && wanted.suppression != used.suppression &&
        wanted.suppression != before.suppression) {
        g_warning("%s: suppression %d is out of range, %d is used", GST_OBJECT_NAME(object),
                  wanted.suppression, used.suppression);
    }
    if (property == kGain && wanted.gain != used.gain && wanted.gain != before.gain) {
        g_warning("%s: gain %g is out of range, %g is used", GST_OBJECT_NAME(object),
                  static_cast<double>(wanted.gain), static_cast<double>(used.gain));
    }
}

void Get(GObject* object, guint property, GValue* value, GParamSpec* spec) {
    const ElementState& state = State(object);
    switch (property) {
        case kLatency: g_value_set_uint64(value, state.latency); return;
        case kMusic: g_value_set_boolean(value, static_cast<gboolean>(state.music.load())); return;
        case kReduction: g_value_set_float(value, state.reduction); return;
        default: break;
    }
    if (!GetProperty(Clamped(Wanted(object)), property, value)) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, property, spec);
    }
}

void Finalize(GObject* object) {
    const std::unique_ptr<ElementState> state(Self(object)->state);
    G_OBJECT_CLASS(parent)->finalize(object);
}

void InitClass(gpointer type, gpointer /*data*/) {
    parent = static_cast<GstBaseTransformClass*>(g_type_class_peek_parent(type));
    GST_DEBUG_CATEGORY_INIT(audio_filter_debug, "audiofilter", 0, "captured audio cleaner");
    auto* object = G_OBJECT_CLASS(type);
    object->set_property = Set;
    object->get_property = Get;
    object->finalize = Finalize;
    InstallProperties(object);

    gst_element_class_set_static_metadata(
        GST_ELEMENT_CLASS(type), "Captured audio cleaner", "Filter/Effect/Audio",
        "Suppresses noise in speech at a constant latency, keeps music, corrects a reversed "
        "stereo channel and raises the loudness",
        "The audio_filter maintainers");
    GstCaps* caps = gst_caps_from_string("audio/x-raw, format = (string) { " GST_AUDIO_NE(
        F32) ", " GST_AUDIO_NE(S16) " }, rate = (int) [ 8000, 192000 ], channels = (int) [ 1, 8 ], "
                                    "layout = (string) { interleaved, non-interleaved }");
    gst_audio_filter_class_add_pad_templates(GST_AUDIO_FILTER_CLASS(type), caps);
    gst_caps_unref(caps);

    GST_AUDIO_FILTER_CLASS(type)->setup = Setup;
    auto* transform = GST_BASE_TRANSFORM_CLASS(type);
    transform->transform_ip = TransformInPlace;
    transform->sink_event = SinkEvent;
    transform->query = Query;
    transform->stop = Stop;
}

void InitInstance(GTypeInstance* instance, gpointer /*type*/) {
    Self(instance)->state = std::make_unique<ElementState>().release();
    gst_base_transform_set_gap_aware(GST_BASE_TRANSFORM(instance), TRUE);
}

}  // namespace

GType ElementType() {
    static const GType type = g_type_register_static_simple(
        GST_TYPE_AUDIO_FILTER, "AudioFilterElement", sizeof(ElementClass), InitClass,
        sizeof(Element), InitInstance, GTypeFlags{});
    return type;
}

}  // namespace audio_filter
