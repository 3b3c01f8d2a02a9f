#pragma once

/// How the library is seen from outside: what is exported, and from which thread it may be called.
///
/// Thread tags. Every public operation carries one of them:
///   [audio]  may run on the audio thread: it allocates nothing and waits for nothing, except for a
///            lock that its own class is said to hold.
///   [setup]  may allocate or touch files; call it while no audio runs through the object.
///   [any]    from any thread at any time, but not beside a [setup] operation of the same object.
/// An object whose class names no lock serves one thread at a time, whatever the tag.
///
/// AUDIO_FILTER_API stands on the class itself, so that all of its members are exported with it.
/// Define AUDIO_FILTER_STATIC when linking the static library; the build's target does so.
#if defined(AUDIO_FILTER_STATIC)
#define AUDIO_FILTER_API
#elif !defined(_WIN32)
#define AUDIO_FILTER_API __attribute__((visibility("default")))
#elif defined(AUDIO_FILTER_BUILD)
#define AUDIO_FILTER_API __declspec(dllexport)
#else
#define AUDIO_FILTER_API __declspec(dllimport)
#endif
