#pragma once

/// @file
/// What the library of the stream exports.

/// Marks what the library exports; see common/export.h.
#if defined(AUDIO_FILTER_STATIC)
#define AUDIO_FILTER_STREAM_API
#elif !defined(_WIN32)
#define AUDIO_FILTER_STREAM_API __attribute__((visibility("default")))
#elif defined(AUDIO_FILTER_STREAM_BUILD)
#define AUDIO_FILTER_STREAM_API __declspec(dllexport)
#else
#define AUDIO_FILTER_STREAM_API __declspec(dllimport)
#endif

/// Marks what a class of the library keeps to itself.
#if defined(_WIN32)
#define AUDIO_FILTER_STREAM_LOCAL
#else
#define AUDIO_FILTER_STREAM_LOCAL __attribute__((visibility("hidden")))
#endif
