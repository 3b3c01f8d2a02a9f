#include "plugins/gstreamer/element_harness.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "support/seed.h"

GstAudioInfo InfoOf(const Format& format) {
    GstAudioInfo info = {};
    gst_audio_info_set_format(&info, format.s16 ? GST_AUDIO_FORMAT_S16 : GST_AUDIO_FORMAT_F32,
                              format.rate, format.channels, nullptr);
    if (format.planar) {
        info.layout = GST_AUDIO_LAYOUT_NON_INTERLEAVED;
    }
    return info;
}

ElementHarness::ElementHarness(const Format& format)
    : mHarness(gst_harness_new("audiofilter")), mBus(gst_bus_new()) {
    gst_element_set_bus(mHarness->element, mBus);
    SetFormat(format);
}

ElementHarness::~ElementHarness() {
    gst_element_set_bus(mHarness->element, nullptr);
    gst_object_unref(mBus);
    gst_harness_teardown(mHarness);
}

void ElementHarness::SetFormat(const Format& format) {
    mInfo = InfoOf(format);
    gst_harness_set_src_caps(mHarness, gst_audio_info_to_caps(&mInfo));
}

GstBuffer* ElementHarness::ToBuffer(const std::vector<float>& samples) const {
    const auto channels = static_cast<std::size_t>(mInfo.channels);
    const std::size_t frames = samples.size() / channels;
    const auto width = static_cast<std::size_t>(mInfo.finfo->width / 8);
    std::vector<std::byte> bytes(samples.size() * width);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const bool planar = mInfo.layout == GST_AUDIO_LAYOUT_NON_INTERLEAVED;
        const std::size_t at = planar ? (i % channels) * frames + i / channels : i;
        const auto s16 = static_cast<std::int16_t>(std::lround(samples[i] * 32768.0F));
        const void* from = width == 2 ? static_cast<const void*>(&s16) : &samples[i];
        std::memcpy(bytes.data() + at * width, from, width);
    }
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, bytes.size(), nullptr);
    gst_buffer_fill(buffer, 0, bytes.data(), bytes.size());
    if (mInfo.layout == GST_AUDIO_LAYOUT_NON_INTERLEAVED) {
        gst_buffer_add_audio_meta(buffer, &mInfo, frames, nullptr);
    }
    return buffer;
}

GstFlowReturn ElementHarness::Push(const std::vector<float>& samples, GstClockTime timestamp,
                                   GstBufferFlags flags) {
    GstBuffer* buffer = ToBuffer(samples);
    const std::size_t frames = samples.size() / static_cast<std::size_t>(mInfo.channels);
    GST_BUFFER_PTS(buffer) = timestamp == kNext ? mEnd : timestamp;
    GST_BUFFER_DURATION(buffer) =
        gst_util_uint64_scale_round(frames, GST_SECOND, static_cast<guint64>(mInfo.rate));
    GST_BUFFER_FLAG_SET(buffer, flags);
    mEnd = GST_BUFFER_PTS(buffer) + GST_BUFFER_DURATION(buffer);
    return gst_harness_push(mHarness, buffer);
}

void ElementHarness::PushInBlocks(const std::vector<float>& samples,
                                  const std::vector<std::size_t>& lengths) {
    const auto channels = static_cast<std::size_t>(mInfo.channels);
    std::size_t turn = 0;
    for (std::size_t at = 0; at < samples.size();) {
        const std::size_t count =
            std::min(lengths[turn++ % lengths.size()] * channels, samples.size() - at);
        const auto from = samples.begin() + static_cast<std::ptrdiff_t>(at);
        Push({from, from + static_cast<std::ptrdiff_t>(count)});
        at += count;
    }
}

void ElementHarness::Send(GstEvent* event) {
    gst_harness_push_event(mHarness, event);
}

Output ElementHarness::Pull() {
    Output output;
    while (GstBuffer* buffer = gst_harness_try_pull(mHarness)) {
        Append(output, buffer);
        gst_buffer_unref(buffer);
    }
    return output;
}

void ElementHarness::Append(Output& output, GstBuffer* buffer) const {
    GstAudioBuffer mapped;
    gst_audio_buffer_map(&mapped, &mInfo, buffer, GST_MAP_READ);
    const auto channels = static_cast<std::size_t>(mInfo.channels);
    const bool planar = mInfo.layout == GST_AUDIO_LAYOUT_NON_INTERLEAVED;
    for (std::size_t i = 0; i < mapped.n_samples * channels; ++i) {
        const auto width = static_cast<std::size_t>(mInfo.finfo->width / 8);
        const void* from = static_cast<const std::byte*>(mapped.planes[planar ? i % channels : 0]) +
                           (planar ? i / channels : i) * width;
        std::int16_t s16 = 0;
        float sample = 0.0F;
        if (width == sizeof(s16)) {
            std::memcpy(&s16, from, width);
            sample = static_cast<float>(s16) / 32768.0F;
        } else {
            std::memcpy(&sample, from, width);
        }
        output.samples.push_back(sample);
    }
    output.buffers.push_back({GST_BUFFER_PTS(buffer), GST_BUFFER_DURATION(buffer), mapped.n_samples,
                              GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_GAP) != 0,
                              GST_BUFFER_IS_DISCONT(buffer) != 0});
    gst_audio_buffer_unmap(&mapped);
}

std::vector<Change> ElementHarness::Changes() {
    std::vector<Change> changes;
    while (GstMessage* message = gst_bus_pop_filtered(mBus, GST_MESSAGE_ELEMENT)) {
        const GstStructure* structure = gst_message_get_structure(message);
        gboolean on = FALSE;
        Change change = {.change = gst_structure_get_string(structure, "change")};
        gst_structure_get_boolean(structure, "on", &on);
        gst_structure_get_uint64(structure, "timestamp", &change.timestamp);
        change.on = on != FALSE;
        changes.push_back(change);
        gst_message_unref(message);
    }
    return changes;
}

std::string ElementHarness::Error() {
    GstMessage* message = gst_bus_pop_filtered(mBus, GST_MESSAGE_ERROR);
    if (message == nullptr) {
        return "";
    }
    GError* error = nullptr;
    gst_message_parse_error(message, &error, nullptr);
    const std::string text = error->message;
    g_error_free(error);
    gst_message_unref(message);
    return text;
}

std::vector<float> Noise(std::size_t samples, float peak) {
    static std::mt19937 random(Seed());
    std::uniform_real_distribution<float> uniform(-peak, peak);
    std::vector<float> noise(samples);
    std::generate(noise.begin(), noise.end(), [&] { return uniform(random); });
    return noise;
}

std::vector<float> Rounded(std::vector<float> samples) {
    for (float& sample : samples) {
        sample = std::round(sample * 32768.0F) / 32768.0F;
    }
    return samples;
}
