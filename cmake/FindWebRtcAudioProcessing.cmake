# Finds the packaged WebRTC audio processing library, version 0.3 (Debian: libwebrtc-audio-processing-dev),
# for its noise suppressor and its 16-bit band filters. Select another build with
# -DWebRtcAudioProcessing_ROOT=DIR.
#
# Defines the target WebRtcAudioProcessing::WebRtcAudioProcessing.

include(FindPackageHandleStandardArgs)
include(CheckLibraryExists)

find_library(WebRtcAudioProcessing_LIBRARY NAMES webrtc_audio_processing)
mark_as_advanced(WebRtcAudioProcessing_LIBRARY)

# Later versions of the package lack this interface. A failure is not cached, because the next
# configuration may name another library.
if(WebRtcAudioProcessing_LIBRARY)
  if(NOT WebRtcAudioProcessing_HAS_SUPPRESSOR)
    unset(WebRtcAudioProcessing_HAS_SUPPRESSOR CACHE)
  endif()
  check_library_exists("${WebRtcAudioProcessing_LIBRARY}" WebRtcNs_Analyze ""
                       WebRtcAudioProcessing_HAS_SUPPRESSOR)
endif()

find_package_handle_standard_args(
  WebRtcAudioProcessing
  REQUIRED_VARS WebRtcAudioProcessing_LIBRARY WebRtcAudioProcessing_HAS_SUPPRESSOR
  REASON_FAILURE_MESSAGE
    "Install libwebrtc-audio-processing-dev (0.3), or name a build of it by -DWebRtcAudioProcessing_ROOT=DIR.")

if(WebRtcAudioProcessing_FOUND AND NOT TARGET WebRtcAudioProcessing::WebRtcAudioProcessing)
  add_library(WebRtcAudioProcessing::WebRtcAudioProcessing UNKNOWN IMPORTED)
  set_target_properties(WebRtcAudioProcessing::WebRtcAudioProcessing
                        PROPERTIES IMPORTED_LOCATION "${WebRtcAudioProcessing_LIBRARY}")
endif()
