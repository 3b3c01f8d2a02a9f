#pragma once

/// @file
/// What the library exports, and from which threads it may be called.
///
/// Thread tags. Every public operation carries one of them:
///
/// - [audio] may run on the audio thread: never allocates, and blocks only on the lock that the
///   class documents, if any.
/// - [setup] may allocate or access files; call it while no audio runs through the object.
/// - [any] from any thread at any time, but not concurrently with a [setup] operation of the
///   same object.
///
/// A class that documents no lock supports one thread at a time per object, with any tag.
///
/// Define AUDIO_FILTER_STATIC when linking the static library; the CMake target does so.

/// Marks a class, which exports all its members.
#if defined(AUDIO_FILTER_STATIC)
#define AUDIO_FILTER_API
#elif !defined(_WIN32)
#define AUDIO_FILTER_API __attribute__((visibility("default")))
#elif defined(AUDIO_FILTER_BUILD)
#define AUDIO_FILTER_API __declspec(dllexport)
#else
#define AUDIO_FILTER_API __declspec(dllimport)
#endif
