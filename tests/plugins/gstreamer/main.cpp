#include <gst/gst.h>
#include <gtest/gtest.h>

#include <cstdio>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    gst_init(&argc, &argv);
    GError* error = nullptr;
    GstPlugin* plugin = gst_plugin_load_file(PLUGIN_FILE, &error);
    if (plugin == nullptr) {
        std::fprintf(stderr, "%s\n", error->message);
        g_error_free(error);
        return 1;
    }
    const int result = RUN_ALL_TESTS();
    gst_object_unref(plugin);
    gst_deinit();  // the leaks tracer reports here
    return result;
}
