# Fails when the shared library defines symbols of the suppressor, or none of its own.
execute_process(COMMAND "${NM}" --dynamic --defined-only --demangle "${LIBRARY}"
                OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
if(NOT symbols MATCHES "AudioDenoise::Process")
  message(FATAL_ERROR "AudioDenoise::Process is not exported")
endif()
if(symbols MATCHES "WebRtc[A-Za-z_]*")
  message(FATAL_ERROR "${CMAKE_MATCH_0} is exported")
endif()
