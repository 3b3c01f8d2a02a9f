# Headers go to <includedir>/audio_filter, so that hosts and sources use the same include lines.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/audio_filter")

install(TARGETS audio_filter EXPORT audio_filter-targets
        FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/audio_filter")
if(AUDIO_FILTER_STREAM)
  install(TARGETS audio_filter_stream EXPORT audio_filter-targets
          FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/audio_filter")
endif()
install(EXPORT audio_filter-targets NAMESPACE audio_filter:: DESTINATION "${package_dir}")
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/audio_filter-config.cmake.in" audio_filter-config.cmake
                              INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file(audio_filter-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/audio_filter-config.cmake"
              "${CMAKE_CURRENT_BINARY_DIR}/audio_filter-config-version.cmake"
              "${CMAKE_CURRENT_LIST_DIR}/FindWebRtcAudioProcessing.cmake"
        DESTINATION "${package_dir}")
